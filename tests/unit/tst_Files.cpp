// SPDX-License-Identifier: MIT
#include "errors/FriendlyError.h"
#include "platform/FileDescriptor.h"
#include "platform/Files.h"
#include "storage/Removal.h"
#include "storage/WholeFiles.h"
#include "support/Failures.h"
#include "support/Sandbox.h"
#include "support/Unprivileged.h"

#include <QtTest>

#include <system_error>

#include <fcntl.h>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

/// A folder that this user may look into but not write to, with one file in it.
fs::path lockedFolder(const Sandbox& sandbox)
{
    const auto folder = sandbox.scratch() / "locked";
    writeFile(folder / "file", "contents");
    for (const auto& parent : {sandbox.root(), sandbox.scratch(), folder})
        fs::permissions(parent, fs::perms::owner_all | fs::perms::group_exec | fs::perms::group_read |
                                    fs::perms::others_exec | fs::perms::others_read);
    fs::permissions(folder, fs::perms::owner_write, fs::perm_options::remove);
    return folder;
}

} // namespace

class FilesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void existsFollowsLinksAndNeverThrows()
    {
        const Sandbox sandbox;
        const auto file = sandbox.scratch() / "file";
        writeFile(file, "x");
        fs::create_symlink("file", sandbox.scratch() / "link");
        fs::create_symlink("nowhere", sandbox.scratch() / "dangling");
        QVERIFY(Files::exists(file));
        QVERIFY(Files::exists(sandbox.scratch()));
        QVERIFY(Files::exists(sandbox.scratch() / "link"));
        QVERIFY(!Files::exists(sandbox.scratch() / "dangling"));
        QVERIFY(!Files::exists(file / "below a file"));
        QVERIFY(!Files::exists(std::string(10'000, 'x')));
        QVERIFY(!Files::exists({}));
    }

    void onlyRegularFilesAreExecutable()
    {
        const Sandbox sandbox;
        const auto file = sandbox.scratch() / "file";
        writeFile(file, "x");
        QVERIFY(!Files::isExecutable(file));
        fs::permissions(file, fs::perms::owner_all);
        QVERIFY(Files::isExecutable(file));
        QVERIFY(!Files::isExecutable(sandbox.scratch()));
        QVERIFY(!Files::isExecutable(sandbox.scratch() / "nothing"));
    }

    void moveReplacesNothing_data()
    {
        QTest::addColumn<QString>("what");
        for (const auto& what :
             {QStringLiteral("file"), QStringLiteral("empty folder"), QStringLiteral("dangling link")})
            QTest::newRow(qPrintable(what)) << what;
    }

    void moveReplacesNothing()
    {
        QFETCH(QString, what);
        const Sandbox sandbox;
        const auto from = sandbox.scratch() / "from";
        const auto to = sandbox.scratch() / "to";
        writeFile(from, "new");
        if (what == QStringLiteral("file"))
            writeFile(to, "old");
        else if (what == QStringLiteral("empty folder"))
            fs::create_directory(to);
        else
            fs::create_symlink("nowhere", to);
        QCOMPARE(errnoOf([&] { Files::move(from, to); }), EEXIST);
        QCOMPARE(readFile(from), QByteArray("new"));
        QCOMPARE(entriesOf(sandbox.scratch()), 2);
    }

    void moveTakesFilesAndFolders()
    {
        const Sandbox sandbox;
        writeFile(sandbox.scratch() / "folder/file", "x");
        Files::move(sandbox.scratch() / "folder", sandbox.scratch() / "moved");
        QCOMPARE(readFile(sandbox.scratch() / "moved/file"), QByteArray("x"));
        QVERIFY(!fs::exists(sandbox.scratch() / "folder"));
        QCOMPARE(errnoOf([&] { Files::move(sandbox.scratch() / "nothing", sandbox.scratch() / "to"); }),
                 ENOENT);
    }

    void createFoldersMakesParents()
    {
        const Sandbox sandbox;
        Files::createFolders(sandbox.scratch() / "a/b/c");
        Files::createFolders(sandbox.scratch() / "a/b/c");
        QVERIFY(fs::is_directory(sandbox.scratch() / "a/b/c"));
        writeFile(sandbox.scratch() / "file", "x");
        QVERIFY(errnoOf([&] { Files::createFolders(sandbox.scratch() / "file"); }) != 0);
        QCOMPARE(errnoOf([&] { Files::createFolders(sandbox.scratch() / "file/a"); }), ENOTDIR);
    }

    void readStopsAtTheLimitOrTheEnd()
    {
        const Sandbox sandbox;
        const auto file = sandbox.scratch() / "file";
        writeFile(file, "contents");
        QCOMPARE(Files::read(file, 4), QByteArray("cont"));
        QCOMPARE(Files::read(file, 8), QByteArray("contents"));
        QCOMPARE(Files::read(file, 100), QByteArray("contents"));
        QCOMPARE(Files::read(file, 0), QByteArray());
        QCOMPARE(Files::read("/dev/zero", 3), QByteArray(3, '\0'));
        QCOMPARE(errnoOf([&] { static_cast<void>(Files::read(sandbox.scratch() / "nothing", 4)); }), ENOENT);
        QCOMPARE(errnoOf([&] { static_cast<void>(Files::read(sandbox.scratch(), 4)); }), EISDIR);
    }

    void permissionsAreKept()
    {
        const Sandbox sandbox;
        const auto folder = lockedFolder(sandbox);
        const Unprivileged unprivileged;
        QCOMPARE(errnoOf([&] { WholeFiles::copy(folder / "file", folder / "copy"); }), EACCES);
        QCOMPARE(errnoOf([&] { Files::move(folder / "file", folder / "moved"); }), EACCES);
        QCOMPARE(errnoOf([&] { Removal::remove(folder); }), EACCES);
        QCOMPARE(errnoOf([&] { Files::createFolders(folder / "new"); }), EACCES);
        QCOMPARE(errnoOf([&] { WholeFiles::write(folder / "file", "x"); }), EACCES);
        Removal::tryRemove(folder);
        QCOMPARE(readFile(folder / "file"), QByteArray("contents"));
        QCOMPARE(entriesOf(folder), 1);
    }

    void errorsCarryTheErrnoAndItsText_data()
    {
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("sentence");
        QTest::newRow("nothing there") << ENOENT << QStringLiteral("No such file or directory");
        QTest::newRow("not allowed") << EACCES << QStringLiteral("Permission denied");
        QTest::newRow("disk full") << ENOSPC << QStringLiteral("No space left on device");
    }

    void errorsCarryTheErrnoAndItsText()
    {
        QFETCH(int, number);
        QFETCH(QString, sentence);
        const Sandbox sandbox;
        const auto folder = lockedFolder(sandbox);
        const Unprivileged unprivileged;
        const auto error = failureOf<std::system_error>([&] {
            if (number == ENOENT)
                static_cast<void>(Files::size(folder / "nothing"));
            else if (number == EACCES)
                Removal::remove(folder / "file");
            else
                FileDescriptor(::open("/dev/full", O_WRONLY | O_CLOEXEC)).writeAll("x", 1);
            return 0;
        });
        QVERIFY(error);
        QCOMPARE(FriendlyError::make(*error, QStringLiteral("Step")).details,
                 QStringLiteral("Step\nNSPOSIXErrorDomain %1\n%2").arg(number).arg(sentence));
    }
};

QTEST_GUILESS_MAIN(FilesTest)
#include "tst_Files.moc"
