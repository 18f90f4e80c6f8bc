// SPDX-License-Identifier: MIT
#include "emulator/Unpacking.h"
#include "errors/AppError.h"
#include "errors/PlatformError.h"
#include "platform/Text.h"
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
    std::optional<AppError> failureOfTool(const QStringList& script, const QByteArray& zip = zipOf({})) const
    {
        scriptChild(script);
        return failureOfShellTool("exec '" SCRIPTED_CHILD "'", zip);
    }

    std::optional<AppError> failureOfShellTool(const QByteArray& script, const QByteArray& zip = zipOf({}),
                                               const fs::path& name = "folder",
                                               const TreeInspection::Bounds& bounds = {}) const
    {
        const StandInTool tool(m_sandbox->scratch() / "tools", script);
        const auto archive = m_sandbox->scratch() / "any.zip";
        writeFile(archive, zip);
        const auto folder = m_sandbox->scratch() / name;
        fs::create_directories(folder);
        return failureOf<AppError>([&] {
            unzip(archive, folder, {}, bounds);
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

    void wordsInANameAreNoFullDisk_data()
    {
        QTest::addColumn<QByteArray>("zip");
        QTest::addColumn<QString>("told");
        QTest::newRow("92 the name that is told")
            << zipOf({{"No Space/x"}}) << QStringLiteral("No Space/x: CRC");
        QTest::newRow("92 another name")
            << zipOf({{"no space"}}) << QStringLiteral("No space left on device");
        // The contents begin after 31 bytes.
        QTest::newRow("92 where two blocks are read")
            << zipOf({{"x", QByteArray(64 * 1024 - 35, 'x') + "no space"}}) << QStringLiteral("no space");
    }

    /// The tool's words do not count where a name in its message may have brought them.
    void wordsInANameAreNoFullDisk()
    {
        QFETCH(const QByteArray, zip);
        QFETCH(const QString, told);
        const auto failure = failureOfTool({QStringLiteral("err ") + told, QStringLiteral("exit 1")}, zip);
        QCOMPARE(failure.value().message,
                 QStringLiteral("Could not unpack Ares. The download may be damaged."));
        QCOMPARE(failure->details, told + u'\n');
    }

    void wordsInTheFoldersNameAreNoFullDisk()
    {
        scriptChild({QStringLiteral("err a/No Space/b: Failed"), QStringLiteral("exit 1")});
        const auto failure = failureOfShellTool("exec '" SCRIPTED_CHILD "'", zipOf({}), "No Space/folder");
        QCOMPARE(failure.value().message,
                 QStringLiteral("Could not unpack Ares. The download may be damaged."));
    }

    void tooLargeArchiveDoesNotStartTheTool_data()
    {
        QTest::addColumn<QByteArray>("zip");
        QTest::addColumn<QString>("reason");
        QTest::newRow("79 1,001 bytes")
            << zipOf({{"a", QByteArray(1000, 'a')}, {"b", "b"}}) << QStringLiteral("b: too many bytes");
        QTest::newRow("79 four entries")
            << zipOf({{"a"}, {"b"}, {"c"}, {"d"}}) << QStringLiteral("d: too many files");
        QTest::newRow("85 no zip") << QByteArray(1000, '\0') << QStringLiteral("The archive has no end.");
    }

    void tooLargeArchiveDoesNotStartTheTool()
    {
        QFETCH(const QByteArray, zip);
        QFETCH(const QString, reason);
        const auto started = m_sandbox->scratch() / "started";
        const auto failure = failureOfShellTool("touch '" + QByteArray::fromStdString(started.native()) + "'",
                                                zip, "folder", {3, 1000});
        QCOMPARE(failure.value().message,
                 QStringLiteral("Could not unpack Ares. The download may be damaged."));
        QCOMPARE(failure->details, reason);
        QVERIFY(!fs::exists(started));
    }

    void toolIsEndedPastWhatIsAnnounced_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("reason");
        QTest::newRow("79 one byte too many")
            << QByteArray("printf 12345 >\"$folder/x\"") << QStringLiteral("x: too many bytes");
        QTest::newRow("79 too many folders")
            << QByteArray("mkdir -p \"$folder/a/b/c/d\"") << QStringLiteral("a/b/c/d: too many files");
        QTest::newRow("79 with a flood of errors")
            << QByteArray("printf 12345 >\"$folder/x\"; exec yes >&2") << QStringLiteral("x: too many bytes");
    }

    void toolIsEndedPastWhatIsAnnounced()
    {
        QFETCH(const QByteArray, script);
        QFETCH(const QString, reason);
        const auto survived = m_sandbox->scratch() / "survived";
        scriptChild({QStringLiteral("wait ") + toText(m_sandbox->scratch() / "never"),
                     QStringLiteral("touch ") + toText(survived)});
        const auto failure =
            failureOfShellTool("for folder; do :; done\n" + script + "\nexec '" SCRIPTED_CHILD "'",
                               zipOf({{"x", "1234"}}), "folder", {3, 1000});
        QCOMPARE(failure.value().message,
                 QStringLiteral("Could not unpack Ares. The download may be damaged."));
        QCOMPARE(failure->details, reason);
        QVERIFY(!fs::exists(survived));
    }

    /// A check every 50 ms lets some 100 MB through here.
    void lyingArchiveIsEndedSoon()
    {
        std::vector<ZipEntry> entries;
        for (ZipEntry zeros = zipZeros({}, 64 * 1024 * 1024); entries.size() < 128;
             entries.push_back(zeros)) {
            zeros.name = QByteArray::number(entries.size());
            // The tool believes what stands before the contents.
            zeros.announcedSize = 10;
        }
        const auto archive = m_sandbox->scratch() / "any.zip";
        writeFile(archive, zipOf(entries));
        const auto failure = failureOf<AppError>([&] {
            unzip(archive, folder(), {});
            return 0;
        });
        QVERIFY2(failure.value().details.endsWith(QStringLiteral(": too many bytes")),
                 qPrintable(failure->details));
        std::uintmax_t written = 0;
        for (const auto& file : fs::directory_iterator(folder()))
            written += file.file_size();
        qInfo("%llu bytes written", static_cast<unsigned long long>(written));
        QVERIFY2(written < 2'000'000'000, qPrintable(QString::number(written)));
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
