// SPDX-License-Identifier: MIT
#include "emulator/Unpacking.h"
#include "errors/AppError.h"
#include "errors/PlatformError.h"
#include "support/AresBundle.h"
#include "support/Failures.h"
#include "support/StandInTool.h"
#include "support/ZipWriter.h"

#include <QtTest>

#include <system_error>

namespace fs = std::filesystem;
using namespace cartloom;

/// How the end of the archive tool is reported. What the real tool makes of damaged archives is tested with
/// whole flows.
class UnpackingTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<Sandbox> m_sandbox;

    fs::path folder() const { return m_sandbox->scratch() / "folder"; }

    /// The failure of a tool that does what the script says.
    std::optional<AppError> failureOfTool(const QStringList& script) const
    {
        scriptChild(script);
        return failureOfShellTool("exec '" SCRIPTED_CHILD "'");
    }

    std::optional<AppError> failureOfShellTool(const QByteArray& script) const
    {
        const StandInTool tool(m_sandbox->scratch() / "tools", script);
        const auto archive = m_sandbox->scratch() / "any.zip";
        writeFile(archive, zipOf({}));
        return failureOf<AppError>([&] {
            unzip(archive, folder(), {});
            return 0;
        });
    }

private Q_SLOTS:
    void init()
    {
        m_sandbox = std::make_unique<Sandbox>();
        fs::create_directories(folder());
    }

    void cleanup() { m_sandbox.reset(); }

    void archiveIsUnpackedAndDeleted()
    {
        const auto archive = m_sandbox->scratch() / "a \"quoted\" name.zip";
        makeAresApp(m_sandbox->scratch() / "tree");
        zipFolder(m_sandbox->scratch() / "tree", archive);
        unzip(archive, folder(), {});
        const auto program = folder() / "ares.app/Contents/MacOS/ares";
        QVERIFY((fs::status(program).permissions() & fs::perms::owner_exec) != fs::perms::none);
        QVERIFY(!fs::exists(archive));
    }

    void failedToolIsReportedWithItsErrorText_data()
    {
        QTest::addColumn<QStringList>("script");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("details");
        const auto full = QStringLiteral("Your disk is full. Free some space and try again.");
        const auto damaged = QStringLiteral("Could not unpack Ares. The download may be damaged.");
        const auto failed = QStringLiteral("exit 1");
        QTest::newRow("no space, in any letter case")
            << QStringList{QStringLiteral("err bsdtar: No Space Left on device"), failed} << full
            << QStringLiteral("bsdtar: No Space Left on device\n");
        QTest::newRow("no space, in other words")
            << QStringList{QStringLiteral("err ditto: there is no space on the volume"), failed} << full
            << QStringLiteral("ditto: there is no space on the volume\n");
        QTest::newRow("another text") << QStringList{QStringLiteral("err bsdtar: Something Else"), failed}
                                      << damaged << QStringLiteral("bsdtar: Something Else\n");
        QTest::newRow("ended by a signal") << QStringList{QStringLiteral("signal 9")} << damaged << QString();
        QTest::newRow("not UTF-8") << QStringList{QStringLiteral("err-hex 6E6F20737061636520FF"), failed}
                                   << damaged << QString();
    }

    void failedToolIsReportedWithItsErrorText()
    {
        QFETCH(const QStringList, script);
        QFETCH(const QString, message);
        QFETCH(const QString, details);
        const auto failure = failureOfTool(script).value();
        QCOMPARE(failure.message, message);
        QCOMPARE(failure.details, details);
    }

    void toolSpeaksEnglishInAnyLanguage()
    {
        const auto language = qgetenv("LC_ALL");
        qputenv("LC_ALL", "de_DE.UTF-8");
        qputenv("LANGUAGE", "de");
        const auto failure = failureOfShellTool("echo \"$LC_ALL $LANGUAGE\" >&2; exit 1");
        qputenv("LC_ALL", language);
        qunsetenv("LANGUAGE");
        QCOMPARE(failure.value().details, QStringLiteral("C.UTF-8 \n"));
    }

    void errorTextOfASuccessfulToolIsIgnored()
    {
        QVERIFY(!failureOfTool({QStringLiteral("err no space"), QStringLiteral("exit 0")}));
    }

    void endlessErrorTextIsReadAndCut()
    {
        const auto details =
            failureOfTool({QStringLiteral("err-bytes 5000000"), QStringLiteral("exit 1")})->details;
        QVERIFY(details.startsWith(QStringLiteral("abc")));
        QVERIFY(details.size() < 100'000);
    }

    void firedTokenIsACancellation()
    {
        const auto archive = m_sandbox->scratch() / "any.zip";
        writeFile(archive, zipOf({zipProgram()}));
        const CancellationSource source;
        source.cancel();
        QVERIFY(failureOf<CancellationError>([&] {
            unzip(archive, folder(), source.token());
            return 0;
        }));
    }

    void missingToolIsTheSystemsOwnError()
    {
        const auto archive = m_sandbox->scratch() / "any.zip";
        writeFile(archive, zipOf({}));
        const auto path = qgetenv("PATH");
        qputenv("PATH", "/nowhere");
        const int number = errnoOf([&] { unzip(archive, folder(), {}); });
        qputenv("PATH", path);
        QCOMPARE(number, ENOENT);
    }
};

QTEST_GUILESS_MAIN(UnpackingTest)
#include "tst_Unpacking.moc"
