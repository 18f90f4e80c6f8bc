// SPDX-License-Identifier: MIT
#include "platform/FileDescriptor.h"
#include "platform/Files.h"
#include "storage/Removal.h"
#include "storage/WorkFolder.h"
#include "support/Failures.h"
#include "support/Sandbox.h"
#include "support/Unprivileged.h"

#include <QtTest>

#include <system_error>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

/// Folders of one name in each other.
void makeChain(const fs::path& top, const std::string& name, int depth)
{
    fs::create_directory(top);
    FileDescriptor folder = FileDescriptor::openForReading(top);
    for (int i = 0; i < depth; ++i) {
        if (::mkdirat(folder.get(), name.c_str(), 0700) != 0)
            throw lastSystemError();
        folder = FileDescriptor(::openat(folder.get(), name.c_str(), O_RDONLY | O_CLOEXEC));
    }
    if (::fchmod(folder.get(), 0) != 0)
        throw lastSystemError();
}

/// Lets this process have no more than so many files open.
class FewOpenFiles
{
public:
    explicit FewOpenFiles(rlim_t most)
    {
        ::getrlimit(RLIMIT_NOFILE, &m_before);
        const rlimit few{most, m_before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &few);
    }
    ~FewOpenFiles() { ::setrlimit(RLIMIT_NOFILE, &m_before); }
    FewOpenFiles(const FewOpenFiles&) = delete;
    FewOpenFiles& operator=(const FewOpenFiles&) = delete;

private:
    rlimit m_before = {};
};

} // namespace

class RemovalTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void removeDoesNotFollowLinks()
    {
        const Sandbox sandbox;
        writeFile(sandbox.scratch() / "kept/file", "x");
        writeFile(sandbox.scratch() / "folder/a/b/file", "x");
        fs::create_directory_symlink(sandbox.scratch() / "kept", sandbox.scratch() / "folder/link");
        fs::create_directory_symlink(sandbox.scratch() / "kept", sandbox.scratch() / "link");
        Removal::remove(sandbox.scratch() / "folder");
        Removal::remove(sandbox.scratch() / "link");
        QCOMPARE(readFile(sandbox.scratch() / "kept/file"), QByteArray("x"));
        QCOMPARE(entriesOf(sandbox.scratch()), 1);
    }

    void removeIgnoresAMissingFile()
    {
        const Sandbox sandbox;
        const auto nothing = sandbox.scratch() / "nothing";
        QCOMPARE(errnoOf([&] { Removal::remove(nothing); }), 0);
        Removal::tryRemove(nothing);
        fs::create_symlink("nowhere", nothing);
        Removal::remove(nothing);
        QCOMPARE(entriesOf(sandbox.scratch()), 0);
    }

    void tryRemoveDeletesReadOnlyFolders()
    {
        const Sandbox sandbox;
        writeFile(sandbox.scratch() / "kept/file", "x");
        const auto tree = sandbox.scratch() / "tree";
        sandbox.giveToEveryone();
        const Unprivileged unprivileged;
        writeFile(tree / "outer/inner/file", "x");
        fs::create_directory_symlink(sandbox.scratch() / "kept", tree / "outer/link");
        fs::permissions(sandbox.scratch() / "tree/outer/inner", fs::perms::owner_read);
        fs::permissions(sandbox.scratch() / "tree/outer", fs::perms::none);
        Removal::tryRemove(tree);
        QVERIFY(!fs::exists(tree));
        QCOMPARE(readFile(sandbox.scratch() / "kept/file"), QByteArray("x"));
    }

    void tryRemoveDeletesFoldersNestedBeyondTheLimits_data()
    {
        QTest::addColumn<int>("length");
        for (const int length : {1, 59, 255})
            QTest::addRow("names of %d", length) << length;
    }

    void tryRemoveDeletesFoldersNestedBeyondTheLimits()
    {
        QFETCH(const int, length);
        const Sandbox sandbox;
        sandbox.giveToEveryone();
        const Unprivileged unprivileged;
        const auto tree = sandbox.scratch() / "tree";
        makeChain(tree, std::string(static_cast<std::size_t>(length), 'd'), 400);
        const FewOpenFiles limit(200);
        std::error_code failure;
        fs::remove_all(tree, failure);
        QCOMPARE(failure.value(), EMFILE);
        Removal::tryRemove(tree);
        QCOMPARE(entriesOf(sandbox.scratch()), 0);
    }

    void workFolderIsDeletedAtTheEndOfItsScope()
    {
        const Sandbox sandbox;
        const auto path = sandbox.scratch() / "work";
        {
            const WorkFolder work(path);
            writeFile(work.path() / "a/file", "x");
        }
        QVERIFY(!fs::exists(path));
    }
};

QTEST_GUILESS_MAIN(RemovalTest)
#include "tst_Removal.moc"
