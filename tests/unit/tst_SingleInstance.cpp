// SPDX-License-Identifier: MIT
#include "support/AresBundle.h"
#include "support/Sandbox.h"

#include <QDir>
#include <QProcess>
#include <QtTest>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <list>
#include <memory>

using namespace cartloom;
namespace fs = std::filesystem;

namespace
{

/// A process that has been started on a folder; it ends with this object at the latest.
class Start
{
public:
    explicit Start(const fs::path& folder, const QStringList& more = {})
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(INSTANCE_CHILD),
                        QStringList{QString::fromStdString(folder.native())} + more);
    }
    ~Start() { kill(); }
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;

    [[nodiscard]] QByteArrayList words()
    {
        m_output += m_process.readAllStandardOutput();
        return m_output.split('\n').mid(0, m_output.count('\n'));
    }
    [[nodiscard]] bool says(const char* word) { return words().value(0) == word; }
    [[nodiscard]] bool hasEndedWell() const
    {
        return m_process.state() == QProcess::NotRunning && m_process.exitStatus() == QProcess::NormalExit &&
               m_process.exitCode() == 0;
    }
    [[nodiscard]] bool isRunning() const { return m_process.state() == QProcess::Running; }

    void signal(int number) const { ::kill(static_cast<pid_t>(m_process.processId()), number); }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    QProcess m_process;
    QByteArray m_output;
};

} // namespace

class SingleInstanceTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<Sandbox> m_sandbox;

    [[nodiscard]] fs::path folder() const { return m_sandbox->home() / "data/Storage"; }
    [[nodiscard]] fs::path runtime() const { return m_sandbox->scratch() / "run"; }
    [[nodiscard]] QStringList files(const char* pattern) const
    {
        return QDir(QString::fromStdString(runtime().native()))
            .entryList({QString::fromLatin1(pattern)}, QDir::System | QDir::Files);
    }

private Q_SLOTS:
    void init()
    {
        m_sandbox = std::make_unique<Sandbox>();
        fs::create_directories(runtime());
        fs::permissions(runtime(), fs::perms::owner_all);
        qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(runtime().native()));
    }

    void theSecondCallsTheFirstAndEnds()
    {
        Start first(folder());
        QTRY_VERIFY(first.says("first"));
        QCOMPARE(first.words(), QByteArrayList{"first"});
        for (int again = 1; again <= 2; ++again) {
            Start second(folder());
            QTRY_VERIFY(second.hasEndedWell());
            QCOMPARE(second.words(), QByteArrayList{"second"});
            QTRY_COMPARE(first.words().count("again"), again);
        }
        QVERIFY(first.isRunning());
    }

    void theFolderItselfIsNotTouched()
    {
        Start first(folder());
        QTRY_VERIFY(first.says("first"));
        QVERIFY(!fs::exists(folder()));
    }

    void startsOnDifferentFoldersDoNotMeet()
    {
        Start one(folder());
        Start other(m_sandbox->home() / "data/Other");
        QTRY_VERIFY(one.says("first"));
        QTRY_VERIFY(other.says("first"));
        QCOMPARE(one.words().size(), 1);
    }

    void aFolderReachedThroughALinkIsTheSame()
    {
        fs::create_directories(folder());
        const fs::path link = m_sandbox->home() / "link";
        fs::create_directory_symlink(m_sandbox->home() / "data", link);
        Start first(folder());
        QTRY_VERIFY(first.says("first"));
        Start second(link / "Storage");
        QTRY_VERIFY(second.says("second"));
    }

    void afterAnOrdinaryEndTheNextIsFirst()
    {
        {
            Start gone(folder());
            QTRY_VERIFY(gone.says("first"));
            gone.signal(SIGTERM);
            QTRY_VERIFY(!gone.isRunning());
        }
        Start next(folder());
        QTRY_VERIFY(next.says("first"));
    }

    void whatAKilledFirstLeavesIsNoObstacle()
    {
        Start killed(folder());
        QTRY_VERIFY(killed.says("first"));
        QTRY_COMPARE(files("*.socket").size(), 1);
        killed.kill();
        QCOMPARE(files("*.socket").size(), 1);

        Start next(folder());
        QTRY_VERIFY(next.says("first"));
        Start second(folder());
        QTRY_VERIFY(second.says("second"));
        QTRY_COMPARE(next.words().count("again"), 1);
    }

    void aProgramThatOutlivesTheFirstDoesNotKeepItsPlace()
    {
        const fs::path program = makeAresApp(m_sandbox->scratch()) / "Contents/MacOS/ares";
        const fs::path started = m_sandbox->scratch() / "started";
        const fs::path end = m_sandbox->scratch() / "end";
        scriptChild({QStringLiteral("touch ") + QString::fromStdString(started.native()),
                     QStringLiteral("wait ") + QString::fromStdString(end.native())});
        Start first(folder(), {QString::fromStdString(program.native())});
        qunsetenv("CARTLOOM_CHILD");
        QTRY_VERIFY(first.says("first"));
        QTRY_VERIFY(fs::exists(started));
        first.kill();

        Start next(folder());
        QTRY_VERIFY(next.says("first"));
        writeFile(end, {});
    }

    void aFirstThatDiesWithoutAnsweringIsSucceeded()
    {
        Start hanging(folder());
        QTRY_VERIFY(hanging.says("first"));
        hanging.signal(SIGSTOP);
        Start next(folder());
        QTRY_VERIFY(next.isRunning());
        hanging.kill();
        QTRY_VERIFY(next.says("first"));
    }

    void ofManyStartsInTheSameInstantOneStays()
    {
        constexpr int count = 8;
        std::list<Start> starts;
        for (int i = 0; i < count; ++i)
            starts.emplace_back(folder());
        const auto saying = [&starts](const char* word) {
            return std::ranges::count_if(starts, [&](Start& start) { return start.says(word); });
        };
        QTRY_COMPARE(saying("second"), count - 1);
        QCOMPARE(saying("first"), 1);
        QTRY_COMPARE(std::ranges::count_if(starts, &Start::hasEndedWell), count - 1);
        const auto first = std::ranges::find_if(starts, [](Start& start) { return start.says("first"); });
        QTRY_COMPARE(first->words().count("again"), count - 1);
        QVERIFY(first->isRunning());
    }

    void whereNoLockIsToBeHadTheProgramStarts()
    {
        {
            Start first(folder());
            QTRY_VERIFY(first.says("first"));
        }
        const QStringList locks = files("*.lock");
        QCOMPARE(locks.size(), 1);
        const fs::path lock = runtime() / locks.first().toStdString();
        fs::remove(lock);
        fs::create_directories(lock);
        Start other(folder());
        QTRY_VERIFY(other.says("first"));
    }
};

QTEST_GUILESS_MAIN(SingleInstanceTest)
#include "tst_SingleInstance.moc"
