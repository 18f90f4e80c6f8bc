// SPDX-License-Identifier: MIT
#include "platform/TreeFlush.h"
#include "support/Failures.h"
#include "support/Sandbox.h"

#include <QtTest>

#include <cerrno>
#include <set>

#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

std::set<ino_t> flushed;
/// The entry whose flush fails.
ino_t failing = 0;

ino_t inodeOf(const fs::path& path)
{
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

} // namespace

/// Interposed: takes down what is flushed.
extern "C" int fsync(int descriptor)
{
    struct stat status = {};
    ::fstat(descriptor, &status);
    flushed.insert(status.st_ino);
    errno = EIO;
    return status.st_ino == failing ? -1 : 0;
}

class TreeFlushMacOSTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<Sandbox> m_sandbox;

    fs::path tree() const { return m_sandbox->scratch() / "tree"; }
    fs::path outside() const { return m_sandbox->scratch() / "outside"; }

private Q_SLOTS:
    void init()
    {
        m_sandbox = std::make_unique<Sandbox>();
        writeFile(outside(), "outside");
        writeFile(tree() / "folder/file", "file");
        fs::create_symlink(outside(), tree() / "link");
        flushed.clear();
        failing = 0;
    }

    void cleanup() { m_sandbox.reset(); }

    void everyFileAndFolderIsFlushed()
    {
        flushTree(tree());
        QCOMPARE(flushed,
                 (std::set{inodeOf(tree()), inodeOf(tree() / "folder"), inodeOf(tree() / "folder/file")}));
    }

    void failureIsTheSystemsOwnError()
    {
        failing = inodeOf(tree() / "folder/file");
        QCOMPARE(errnoOf([this] { flushTree(tree()); }), EIO);
    }
};

QTEST_GUILESS_MAIN(TreeFlushMacOSTest)
#include "tst_TreeFlushMacOS.moc"
