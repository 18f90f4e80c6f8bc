// SPDX-License-Identifier: MIT
#include "platform/ArchiveTool.h"
#include "support/Sandbox.h"

#include <QProcess>
#include <QtTest>

#include <sys/stat.h>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

int run(const std::string& program, const std::vector<std::string>& arguments)
{
    QStringList words;
    for (const auto& argument : arguments)
        words.append(QString::fromStdString(argument));
    QProcess process;
    process.start(QString::fromStdString(program), words);
    return process.waitForFinished() && process.exitStatus() == QProcess::NormalExit ? process.exitCode()
                                                                                     : -1;
}

mode_t modeOf(const fs::path& path)
{
    struct stat status = {};
    ::lstat(path.c_str(), &status);
    return status.st_mode;
}

/// A zip of all that stands in a folder.
fs::path zipOf(const Sandbox& sandbox, const fs::path& folder)
{
    const auto archive = sandbox.scratch() / "-an archive.zip";
    if (run("bsdtar", {"-c", "--format", "zip", "-f", archive.native(), "-C", folder.native(), "."}) != 0)
        qFatal("cannot make a zip");
    return archive;
}

int unpack(const fs::path& archive, const fs::path& folder)
{
    fs::create_directories(folder);
    const auto tool = ArchiveTool::unpackZip(archive, folder);
    return run(tool.program.native(), tool.arguments);
}

} // namespace

/// The command, run for real.
class ArchiveToolFreedesktopTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void zipIsUnpackedWithLinksAndPermissions()
    {
        const Sandbox sandbox;
        const auto from = sandbox.scratch() / "from";
        const auto to = sandbox.scratch() / "to here";
        writeFile(from / "ares.app/Contents/MacOS/ares", "program");
        fs::permissions(from / "ares.app/Contents/MacOS/ares", fs::perms::owner_exec, fs::perm_options::add);
        writeFile(from / "ares.app/Contents/ä日 text", "text");
        fs::create_symlink("MacOS/ares", from / "ares.app/Contents/link");

        QCOMPARE(unpack(zipOf(sandbox, from), to), 0);
        QCOMPARE(readFile(to / "ares.app/Contents/MacOS/ares"), QByteArray("program"));
        QVERIFY((modeOf(to / "ares.app/Contents/MacOS/ares") & S_IXUSR) != 0);
        QCOMPARE(readFile(to / "ares.app/Contents/ä日 text"), QByteArray("text"));
        QVERIFY((modeOf(to / "ares.app/Contents/ä日 text") & S_IXUSR) == 0);
        QCOMPARE(fs::read_symlink(to / "ares.app/Contents/link"), fs::path("MacOS/ares"));
    }

    void setIdBitsAreDropped()
    {
        const Sandbox sandbox;
        const auto from = sandbox.scratch() / "from";
        const auto to = sandbox.scratch() / "to";
        writeFile(from / "program", "x");
        QCOMPARE(::chmod((from / "program").c_str(), 06777), 0);
        QCOMPARE(unpack(zipOf(sandbox, from), to), 0);
        QCOMPARE(modeOf(to / "program") & (S_ISUID | S_ISGID | S_IWOTH), mode_t(0));
        QVERIFY((modeOf(to / "program") & S_IXUSR) != 0);
    }

    void fileThatIsNoArchiveUnpacksNothing_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("fails");
        // To the tool these two are archives without entries.
        QTest::newRow("nothing in it") << QByteArray() << false;
        QTest::newRow("zeros") << QByteArray(10'000, '\0') << false;
        QTest::newRow("a page") << QByteArray("<!doctype html><title>Log in</title>") << true;
    }

    void fileThatIsNoArchiveUnpacksNothing()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, fails);
        const Sandbox sandbox;
        const auto archive = sandbox.scratch() / "archive.zip";
        writeFile(archive, bytes);
        QCOMPARE(unpack(archive, sandbox.scratch() / "to") > 0, fails);
        QVERIFY(fs::is_empty(sandbox.scratch() / "to"));
    }

    void missingArchiveFails()
    {
        const Sandbox sandbox;
        QVERIFY(unpack(sandbox.scratch() / "nothing.zip", sandbox.scratch() / "to") > 0);
    }

    void truncatedArchiveFails()
    {
        const Sandbox sandbox;
        const auto from = sandbox.scratch() / "from";
        writeFile(from / "file", QByteArray(100'000, 'x'));
        const auto archive = zipOf(sandbox, from);
        fs::resize_file(archive, fs::file_size(archive) / 2);
        QVERIFY(unpack(archive, sandbox.scratch() / "to") > 0);
    }
};

QTEST_GUILESS_MAIN(ArchiveToolFreedesktopTest)
#include "tst_ArchiveToolFreedesktop.moc"
