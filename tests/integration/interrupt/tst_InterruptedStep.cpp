// SPDX-License-Identifier: MIT
#include "InterruptedTest.h"
#include "PowerLoss.h"

#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/TreeText.h"

#include <QRegularExpression>
#include <QStandardPaths>
#include <QtTest>

#include <cerrno>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

const QStringList settled{QStringLiteral("Ares"), QStringLiteral("Quillet64.eeprom"),
                          QStringLiteral("Quillet64.z64"), QStringLiteral("ares-version.txt")};
const QStringList unproven{QStringLiteral("Ares"), QStringLiteral("Ares-old"),
                           QStringLiteral("Quillet64.eeprom"), QStringLiteral("Quillet64.z64"),
                           QStringLiteral("ares-version.txt")};

/// The system calls that strace shows, by the name that the library has for them.
const std::map<QString, QString> kinds = [] {
    constexpr std::pair<const char*, const char*> calls[] = {
        {"open", "open openat creat"},
        {"write", "write pwrite64 writev pwritev pwritev2 sendfile copy_file_range splice"},
        {"truncate", "fallocate truncate ftruncate"},
        {"sync", "fsync fdatasync"},
        {"syncfs", "syncfs"},
        {"rename", "rename renameat renameat2"},
        {"link", "link linkat"},
        {"symlink", "symlink symlinkat"},
        {"remove", "unlink unlinkat rmdir"},
        {"mkdir", "mkdir mkdirat"},
        {"mknod", "mknod mknodat"},
        {"chmod", "chmod fchmod fchmodat fchmodat2"},
        {"chown", "chown lchown fchown fchownat"},
        {"times", "utime utimes futimesat utimensat"},
        {"xattr", "setxattr lsetxattr fsetxattr"},
    };
    std::map<QString, QString> kindOf;
    for (const auto& [kind, names] : calls) {
        for (const auto& name : QString::fromLatin1(names).split(u' '))
            kindOf.emplace(name, QString::fromLatin1(kind));
    }
    return kindOf;
}();

} // namespace

/// Single steps that fail, and what the player then reads and finds; and that no step escapes the counter.
class InterruptedStepTest : public InterruptedTest
{
    Q_OBJECT

    /// A move within the storage folder, as the library calls it.
    static QByteArray move(const fs::path& from, const fs::path& to)
    {
        return "rename " + QByteArray::fromStdString(from.native()) + " > " +
               QByteArray::fromStdString(to.native());
    }

    bool holds(const fs::path& folder, const char* tag) const
    {
        return treeText(folder) == treeText(m_sandbox->scratch() / "whole" / tag);
    }

    /// Of one line of strace, what kind of change below the home folder it shows; none if it shows no such
    /// thing.
    QString changeIn(const QString& line) const
    {
        static const QRegularExpression call(QStringLiteral("^(\\w+)\\((.*)"));
        static const QRegularExpression relative(QStringLiteral("^\"[^/]"));
        static const QRegularExpression writing(QStringLiteral("O_WRONLY|O_RDWR|O_CREAT|O_TRUNC"));
        const auto match = call.match(line);
        const auto kind = kinds.find(match.captured(1));
        // What names a file by a relative path alone is the archive tool in its
        // target.
        const bool elsewhere = !match.captured(2).contains(toText(m_sandbox->home())) &&
                               !relative.match(match.captured(2)).hasMatch();
        if (kind == kinds.end() || elsewhere)
            return {};
        if (kind->second == QLatin1String("open") && !line.contains(writing))
            return {};
        // One call of the C library tries a folder as a file first, another one the permissions of a link,
        // which changes nothing.
        const bool tried =
            (kind->second == QLatin1String("remove") && line.contains(QLatin1String("EISDIR"))) ||
            (kind->second == QLatin1String("chmod") && line.contains(QLatin1String("EOPNOTSUPP")));
        return tried ? QString() : kind->second;
    }

    /// The changes below the home folder that strace has seen, by kind. It writes a file for each thread.
    QStringList seenByStrace(const fs::path& folder) const
    {
        QStringList seen;
        for (const auto& thread : fs::directory_iterator(folder)) {
            for (const auto& line : QString::fromUtf8(readFile(thread.path())).split(u'\n')) {
                if (const QString change = changeIn(line); !change.isEmpty())
                    seen.append(change);
            }
        }
        seen.sort();
        return seen;
    }

private Q_SLOTS:
    void failedMoveAsideKeepsTheInstalledCopy()
    {
        prepare(QStringLiteral("update"));
        const auto end = run(QStringLiteral("update"),
                             {"1", QByteArray::number(EIO), move(Paths::ares(), Paths::aresOld())});
        QCOMPARE(end.words, QStringLiteral("Updating Ares failed: Input/output error"));
        QVERIFY(holds(Paths::ares(), "v146"));
        QVERIFY(holds(Paths::aresNew(), "v147"));
        QCOMPARE(readFile(Paths::aresVersion()), QByteArray("v146"));
        QVERIFY(!fs::exists(Paths::aresOld()));
        const auto aftermath = run(QStringLiteral("aftermath"));
        QVERIFY2(aftermath.well, qPrintable(aftermath.complaint));
    }

    void failedMoveIntoPlaceRestoresTheInstalledCopy()
    {
        prepare(QStringLiteral("update"));
        const auto end = run(QStringLiteral("update"),
                             {"1", QByteArray::number(EIO), move(Paths::aresNew(), Paths::ares())});
        QCOMPARE(end.words, QStringLiteral("Updating Ares failed: Input/output error"));
        QVERIFY(holds(Paths::ares(), "v146"));
        QVERIFY(holds(Paths::aresNew(), "v147"));
        QCOMPARE(readFile(Paths::aresVersion()), QByteArray("v146"));
        QCOMPARE(Sandbox::storage(),
                 (QStringList{QStringLiteral("Ares"), QStringLiteral("Ares-new"),
                              QStringLiteral("Quillet64.eeprom"), QStringLiteral("Quillet64.z64"),
                              QStringLiteral("ares-version.txt")}));
        const auto aftermath = run(QStringLiteral("aftermath"));
        QVERIFY2(aftermath.well, qPrintable(aftermath.complaint));
    }

    void failedRestoreLeavesTheKeptCopy()
    {
        prepare(QStringLiteral("update"));
        const auto end =
            run(QStringLiteral("update"), {"all", QByteArray::number(ENOSPC), move("*", Paths::ares())});
        QCOMPARE(end.words, QStringLiteral("Your disk is full. Free some space and try again."));
        QCOMPARE(end.calls.size(), 2);
        QVERIFY(!fs::exists(Paths::ares()));
        QVERIFY(holds(Paths::aresOld(), "v146"));
        QVERIFY(holds(Paths::aresNew(), "v147"));
        const auto aftermath = run(QStringLiteral("aftermath"));
        QVERIFY2(aftermath.well, qPrintable(aftermath.complaint));
    }

    void omittedFlushIsFound_data()
    {
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QString>("flush");
        const auto row = [](const char* operation, const char* flush) {
            QTest::addRow("101 %s without: %s", operation, flush)
                << QString::fromLatin1(operation) << QString::fromLatin1(flush);
        };
        row("install", "^syncfs .*/Ares-new$");
        row("update", "^sync .*/\\.ares-version\\.txt-");
        row("game", "^sync .*/download-game-.*/Quillet64\\.z64$");
        row("import", "^sync .*/\\.Quillet64\\.z64-");
    }

    /// The operation ends, and then the power is lost.
    void omittedFlushIsFound()
    {
        QFETCH(const QString, operation);
        QFETCH(const QString, flush);
        prepare(operation);
        auto calls = run(commandOf(operation), {"0", "kill", {}}).calls;
        const auto all = calls.size();
        calls.removeIf(
            [pattern = QRegularExpression(flush)](const QString& call) { return call.contains(pattern); });
        QCOMPARE(all - calls.size(), 1);
        loseUnflushed(calls, Remains::zeros);
        QVERIFY(!run(QStringLiteral("aftermath")).well);
    }

    void unrecordedTagIsNoFailure()
    {
        prepare(QStringLiteral("update"));
        const auto end =
            run(QStringLiteral("update"), {"1", QByteArray::number(EIO), move("*", Paths::aresVersion())});
        QCOMPARE(end.words,
                 QStringLiteral("Ares v147 is installed. The old copy is kept until the new one has "
                                "started once."));
        QVERIFY(holds(Paths::ares(), "v147"));
        QVERIFY(holds(Paths::aresOld(), "v146"));
        QCOMPARE(readFile(Paths::aresVersion()), QByteArray("v146"));
        QCOMPARE(Sandbox::storage(), unproven);
    }

    void unreadableNewCopyStaysInstalled()
    {
        prepare(QStringLiteral("update"));
        const auto listing = "list " + QByteArray::fromStdString(Paths::ares().native());
        const auto end = run(QStringLiteral("update"), {"4", QByteArray::number(EIO), listing});
        QCOMPARE(end.words, QStringLiteral("Ares was unpacked but ares.app could not be found."));
        QVERIFY(holds(Paths::ares(), "v147"));
        QVERIFY(holds(Paths::aresOld(), "v146"));
        QCOMPARE(readFile(Paths::aresVersion()), QByteArray("v147"));
        QCOMPARE(Sandbox::storage(), unproven);
        const auto aftermath = run(QStringLiteral("aftermath"));
        QVERIFY2(aftermath.well, qPrintable(aftermath.complaint));
    }

    void failedRollbackChangesNothing()
    {
        prepare(QStringLiteral("rollback"));
        const auto end = run(QStringLiteral("rollback"),
                             {"1", QByteArray::number(EIO), move(Paths::ares(), "*/Ares-failed-*")});
        QVERIFY(end.words.endsWith(QStringLiteral("click Open Anyway next to ares.")));
        QVERIFY(holds(Paths::ares(), "v147"));
        QVERIFY(holds(Paths::aresOld(), "v146"));
        QCOMPARE(Sandbox::storage(), unproven);
    }

    void interruptedRollbackIsFinishedByTheNextPress()
    {
        prepare(QStringLiteral("rollback"));
        const auto end = run(QStringLiteral("rollback"),
                             {"1", QByteArray::number(EIO), move(Paths::aresOld(), Paths::ares())});
        QCOMPARE(
            end.words,
            QStringLiteral("Ares stopped right away (exit code 1).\n\nbroken\n\nIf macOS blocked it, open "
                           "System Settings, then Privacy and Security, and click Open Anyway next to "
                           "ares."));
        QVERIFY(!fs::exists(Paths::ares()));
        QVERIFY(holds(Paths::aresOld(), "v146"));
        const auto failed = Sandbox::storage().filter(QRegularExpression(QStringLiteral("^Ares-failed-")));
        QCOMPARE(failed.size(), 1);
        QVERIFY(holds(Paths::support() / toPath(failed.first()), "v147"));

        const auto press = run(QStringLiteral("press"));
        QVERIFY2(press.well, qPrintable(press.complaint));
        QCOMPARE(readFile(m_sandbox->scratch() / "played"), QByteArray("v146"));
        QVERIFY(holds(Paths::ares(), "v146"));
    }

    void everyChangeIsCounted_data()
    {
        QTest::addColumn<QString>("operation");
        for (const auto* operation :
             {"install", "update", "rollback", "commit", "recovery", "game", "import", "reset"})
            QTest::addRow("66 %s", operation) << QString::fromLatin1(operation);
    }

    void everyChangeIsCounted()
    {
        QFETCH(const QString, operation);
        const auto strace = QStandardPaths::findExecutable(QStringLiteral("strace"));
        if (strace.isEmpty())
            QSKIP("strace is not installed");
        prepare(operation);
        const auto trace = m_sandbox->scratch() / "trace";
        fs::remove_all(trace);
        fs::create_directories(trace);
        const auto end =
            run(commandOf(operation), {"0", "kill", {}},
                {strace, QStringLiteral("-ff"), QStringLiteral("-qq"), QStringLiteral("-y"),
                 QStringLiteral("-s"), QStringLiteral("0"), QStringLiteral("-o"), toText(trace / "of")});
        if (end.complaint.contains(QLatin1String("ptrace")) || fs::is_empty(trace))
            QSKIP("this system lets nobody be traced");
        QVERIFY2(end.well, qPrintable(end.complaint));
        QStringList counted;
        for (const auto& line : end.calls)
            counted.append(line.section(u' ', 0, 0));
        // The archive tool tries it on links, where the C library or the system refuses it.
        counted.removeAll(QStringLiteral("lchmod"));
        counted.sort();
        QVERIFY(!counted.isEmpty());
        QCOMPARE(counted.join(u' '), seenByStrace(trace).join(u' '));
    }
};

QTEST_GUILESS_MAIN(InterruptedStepTest)
#include "tst_InterruptedStep.moc"
