// SPDX-License-Identifier: MIT
#include "emulator/Unpacking.h"
#include "game/AppError.h"
#include "support/AresBundle.h"
#include "support/Failures.h"
#include "support/Sandbox.h"
#include "support/ZipWriter.h"

#include <QtTest>

#include <system_error>

namespace fs = std::filesystem;
using namespace cartloom;

class UnpackingTest : public QObject
{
    Q_OBJECT

    const QByteArray m_path = qgetenv("PATH");
    std::unique_ptr<Sandbox> m_sandbox;

    fs::path folder() const { return m_sandbox->scratch() / "folder"; }

    void unpack(const fs::path& archive) const { unzip(archive, folder()); }

    /// What the tool that was replaced is given.
    std::optional<AppError> unpackFailure() const
    {
        writeFile(m_sandbox->scratch() / "any.zip", zipOf({}));
        return unpackFailure(m_sandbox->scratch() / "any.zip");
    }

    std::optional<AppError> unpackFailure(const fs::path& archive) const
    {
        return failureOf<AppError>([&] {
            unpack(archive);
            return 0;
        });
    }

    /// The scripted child stands in for the archive tool.
    void replaceTool(const QStringList& script) const
    {
        const auto tools = m_sandbox->scratch() / "tools";
        fs::create_directories(tools);
        fs::rename(makeAresApp(tools) / "Contents/MacOS/ares", tools / "bsdtar");
        qputenv("PATH", QByteArray::fromStdString(tools.native()));
        scriptChild(script);
    }

private Q_SLOTS:
    void init()
    {
        m_sandbox = std::make_unique<Sandbox>();
        fs::create_directories(folder());
    }

    void cleanup()
    {
        qputenv("PATH", m_path);
        m_sandbox.reset();
    }

    void aRealArchiveIsUnpackedWithItsPermissions()
    {
        const auto archive = m_sandbox->scratch() / "a \"quoted\" name.zip";
        makeAresApp(m_sandbox->scratch() / "tree");
        zipFolder(m_sandbox->scratch() / "tree", archive);
        unpack(archive);
        const auto program = folder() / "ares.app/Contents/MacOS/ares";
        QVERIFY(fs::exists(program));
        QVERIFY((fs::status(program).permissions() & fs::perms::owner_exec) != fs::perms::none);
    }

    void anArchiveThatIsCutOffIsRefused()
    {
        const auto archive = m_sandbox->scratch() / "archive.zip";
        makeAresApp(m_sandbox->scratch() / "tree");
        zipFolder(m_sandbox->scratch() / "tree", archive);
        fs::resize_file(archive, fs::file_size(archive) / 2);
        const auto failure = unpackFailure(archive).value();
        QCOMPARE(failure.message, QStringLiteral("Could not unpack Ares. The download may be damaged."));
        QCOMPARE(failure.details, QStringLiteral("The archive has no end."));
    }

    void whatTheToolComplainsOfIsInTheDetails()
    {
        const auto archive = m_sandbox->scratch() / "archive.zip";
        ZipEntry damaged = zipProgram();
        damaged.checksum = 1;
        writeFile(archive, zipOf({damaged}));
        const auto failure = unpackFailure(archive).value();
        QCOMPARE(failure.message, QStringLiteral("Could not unpack Ares. The download may be damaged."));
        QVERIFY2(failure.details.contains(QStringLiteral("CRC")), qPrintable(failure.details));
    }

    void noSpaceLeftInAnyLetterCaseIsAFullDisk()
    {
        replaceTool({QStringLiteral("err bsdtar: No Space Left on device"), QStringLiteral("exit 1")});
        const auto failure = unpackFailure().value();
        QCOMPARE(failure.message, QStringLiteral("Your disk is full. Free some space and try again."));
        QCOMPARE(failure.details, QStringLiteral("bsdtar: No Space Left on device\n"));
    }

    void anyOtherTextIsADamagedDownload()
    {
        replaceTool({QStringLiteral("err bsdtar: Something Else"), QStringLiteral("exit 1")});
        const auto failure = unpackFailure().value();
        QCOMPARE(failure.message, QStringLiteral("Could not unpack Ares. The download may be damaged."));
        QCOMPARE(failure.details, QStringLiteral("bsdtar: Something Else\n"));
    }

    void aToolThatDiesByASignalHasFailed()
    {
        replaceTool({QStringLiteral("signal 9")});
        QCOMPARE(unpackFailure().value().details, QString());
    }

    void aTextThatIsNotUtf8ReadsAsEmpty()
    {
        replaceTool({QStringLiteral("err-hex 6E6F20737061636520FF"), QStringLiteral("exit 1")});
        const auto failure = unpackFailure().value();
        QCOMPARE(failure.message, QStringLiteral("Could not unpack Ares. The download may be damaged."));
        QCOMPARE(failure.details, QString());
    }

    void aComplaintWithoutFailureIsIgnored()
    {
        replaceTool({QStringLiteral("err no space"), QStringLiteral("exit 0")});
        QVERIFY(!unpackFailure());
    }

    void aToolThatComplainsWithoutEndIsReadToItsEnd()
    {
        replaceTool({QStringLiteral("err-bytes 5000000"), QStringLiteral("exit 1")});
        QVERIFY(unpackFailure()->details.startsWith(QStringLiteral("abc")));
    }

    void aToolThatIsMissingIsTheSystemsOwnError()
    {
        const auto archive = m_sandbox->scratch() / "any.zip";
        writeFile(archive, zipOf({}));
        qputenv("PATH", "/nowhere");
        const auto failure = failureOf<std::system_error>([&] {
            unpack(archive);
            return 0;
        });
        QCOMPARE(failure.value().code().value(), ENOENT);
    }
};

QTEST_GUILESS_MAIN(UnpackingTest)
#include "tst_Unpacking.moc"
