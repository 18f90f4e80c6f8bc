// SPDX-License-Identifier: MIT
#include "storage/WholeFiles.h"
#include "support/Failures.h"
#include "support/Sandbox.h"

#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;

class WholeFilesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void copyHasTheSameBytes()
    {
        const Sandbox sandbox;
        QByteArray bytes(1'000'003, Qt::Uninitialized);
        for (qsizetype i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<char>(i * 31 % 251);
        writeFile(sandbox.scratch() / "from", bytes);
        WholeFiles::copy(sandbox.scratch() / "from", sandbox.scratch() / "to");
        QCOMPARE(readFile(sandbox.scratch() / "to"), bytes);
        QCOMPARE(readFile(sandbox.scratch() / "from"), bytes);
        QCOMPARE(entriesOf(sandbox.scratch()), 2);
    }

    void copyReplacesNothing()
    {
        const Sandbox sandbox;
        writeFile(sandbox.scratch() / "from", "new");
        writeFile(sandbox.scratch() / "to", "old");
        QCOMPARE(errnoOf([&] { WholeFiles::copy(sandbox.scratch() / "from", sandbox.scratch() / "to"); }),
                 EEXIST);
        QCOMPARE(readFile(sandbox.scratch() / "to"), QByteArray("old"));
        QCOMPARE(entriesOf(sandbox.scratch()), 2);
    }

    void failedCopyLeavesNothing()
    {
        const Sandbox sandbox;
        fs::create_directory(sandbox.scratch() / "folder");
        QCOMPARE(errnoOf([&] { WholeFiles::copy(sandbox.scratch() / "folder", sandbox.scratch() / "to"); }),
                 EISDIR);
        QCOMPARE(errnoOf([&] { WholeFiles::copy(sandbox.scratch() / "nothing", sandbox.scratch() / "to"); }),
                 ENOENT);
        QCOMPARE(entriesOf(sandbox.scratch()), 1);
    }

    void writeReplacesTheWholeFile()
    {
        const Sandbox sandbox;
        const auto file = sandbox.scratch() / "file";
        WholeFiles::write(file, "old and long");
        WholeFiles::write(file, "new");
        QCOMPARE(readFile(file), QByteArray("new"));
        QCOMPARE(entriesOf(sandbox.scratch()), 1);
    }

    void failedWriteLeavesNothing()
    {
        const Sandbox sandbox;
        fs::create_directory(sandbox.scratch() / "folder");
        QCOMPARE(errnoOf([&] { WholeFiles::write(sandbox.scratch() / "folder", "x"); }), EISDIR);
        QCOMPARE(entriesOf(sandbox.scratch()), 1);
    }
};

QTEST_GUILESS_MAIN(WholeFilesTest)
#include "tst_WholeFiles.moc"
