// SPDX-License-Identifier: MIT
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/Checked.h"
#include "support/EventLoopWait.h"
#include "support/FaultTest.h"
#include "support/LauncherProcess.h"
#include "support/Snapshot.h"

#include <QLocalServer>
#include <QLocalSocket>
#include <QtTest>

#include <functional>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace cartloom;

/// Lock and socket of the single instance, in folders that are the user's alone or not.
class InstancePlaceTest : public FaultTest
{
    Q_OBJECT

    [[nodiscard]] fs::path folder() const { return m_sandbox->home() / "data/Storage"; }
    [[nodiscard]] fs::path fallback() const { return folder() / ".instance"; }
    [[nodiscard]] fs::path runtime() const { return m_sandbox->scratch() / "run"; }
    [[nodiscard]] fs::path elsewhere() const { return m_sandbox->scratch() / "elsewhere"; }

    /// The path of the one file of a folder whose name ends so.
    [[nodiscard]] static fs::path only(const fs::path& folder, const char* ending)
    {
        fs::path found;
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (entry.path().extension() == ending)
                found = entry.path();
        }
        return found;
    }

    /// The lock's path in the runtime folder, where a start that has ended left it.
    [[nodiscard]] fs::path lockOfAnEarlierStart() const
    {
        Start first(folder());
        return comesTrue([&] { return first.says("first"); }) ? only(runtime(), ".lock") : fs::path();
    }

    static void holdLock(const fs::path& file, FileDescriptor& lock)
    {
        lock = FileDescriptor(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
        QCOMPARE(::flock(lock.get(), LOCK_EX | LOCK_NB), 0);
    }

    /// A server that answers as a first would.
    static void answerAt(const fs::path& socket, QLocalServer& server)
    {
        fs::remove(socket);
        QVERIFY(server.listen(toText(socket)));
        connect(&server, &QLocalServer::newConnection, &server, [&server] {
            auto* const caller = server.nextPendingConnection();
            caller->write("!");
            caller->flush();
        });
    }

    void secondFindsFirst()
    {
        Start first(folder());
        QVERIFY(comesTrue([&] { return first.says("first"); }));
        Start second(folder());
        QVERIFY(comesTrue([&] { return second.hasEndedWell(); }));
        QCOMPARE(second.words(), QByteArrayList{"second"});
        QVERIFY(comesTrue([&] { return first.words().count("again") == 1; }));
    }

private Q_SLOTS:
    void init()
    {
        FaultTest::init();
        for (const auto& folder : {runtime(), elsewhere()})
            fs::create_directories(folder);
        fs::permissions(runtime(), fs::perms::owner_all);
        m_formerRuntime = qgetenv("XDG_RUNTIME_DIR");
        qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(runtime().native()));
    }

    void cleanup()
    {
        qputenv("XDG_RUNTIME_DIR", m_formerRuntime);
        FaultTest::cleanup();
    }

    void otherUsersCanNeitherHoldTheLockNorAnswer_data()
    {
        using Change = std::function<void(const fs::path&)>;
        QTest::addColumn<Change>("change");
        const auto add = [](const char* name, const Change& change) { QTest::newRow(name) << change; };
        add("86 runtime folder of another user", [](const fs::path& runtime) {
            if (::chown(runtime.c_str(), 65534, 65534) != 0)
                QSKIP("only root can make a folder of another owner");
        });
        add("86 runtime folder that everyone may write to",
            [](const fs::path& runtime) { fs::permissions(runtime, fs::perms(01777)); });
        add("86 runtime folder that the group may write to",
            [](const fs::path& runtime) { fs::permissions(runtime, fs::perms(0770)); });
        add("86 runtime folder behind a link", [](const fs::path& runtime) {
            const auto real = runtime.parent_path() / "real";
            fs::rename(runtime, real);
            fs::create_directory_symlink(real, runtime);
        });
    }

    void otherUsersCanNeitherHoldTheLockNorAnswer()
    {
        QFETCH(const std::function<void(const fs::path&)>, change);
        const auto lock = lockOfAnEarlierStart();
        QVERIFY(!lock.empty());
        change(runtime());
        FileDescriptor held;
        CHECKED(holdLock(lock, held));
        QLocalServer impostor;
        CHECKED(answerAt(fs::path(lock).replace_extension(".socket"), impostor));
        const auto before = snapshotOf(runtime());
        CHECKED(secondFindsFirst());
        QCOMPARE(snapshotOf(runtime()), before);
        QVERIFY(!only(fallback(), ".lock").empty());
        QCOMPARE(fs::status(fallback()).permissions(), fs::perms::owner_all);
    }

    void fallbackLiesInTheStorageFolder_data()
    {
        QTest::addColumn<QByteArray>("runtime");
        QTest::newRow("86 no runtime folder named") << QByteArray();
        QTest::newRow("86 relative runtime folder") << QByteArray("run");
        QTest::newRow("86 runtime folder that is missing") << QByteArray("/nothing/run");
        QTest::newRow("86 runtime folder that is a file") << QByteArray("/dev/null");
    }

    void fallbackLiesInTheStorageFolder()
    {
        QFETCH(const QByteArray, runtime);
        runtime.isEmpty() ? qunsetenv("XDG_RUNTIME_DIR") : qputenv("XDG_RUNTIME_DIR", runtime);
        CHECKED(secondFindsFirst());
        QVERIFY(!only(fallback(), ".lock").empty());
        QCOMPARE(snapshotOf(temporary()), QStringList());
    }

    void plantedLinkIsNotFollowed_data()
    {
        QTest::addColumn<bool>("inFallback");
        QTest::newRow("86 link in place of the lock") << false;
        QTest::newRow("86 link in place of the fallback's folder") << true;
    }

    void plantedLinkIsNotFollowed()
    {
        QFETCH(const bool, inFallback);
        const auto lock = lockOfAnEarlierStart();
        if (inFallback) {
            fs::permissions(runtime(), fs::perms(0777));
            fs::create_directories(folder());
            fs::create_directory_symlink(elsewhere(), fallback());
        } else {
            fs::remove(lock);
            fs::create_symlink(elsewhere() / "planted", lock);
        }
        Start start(folder());
        QVERIFY(comesTrue([&] { return start.says("first"); }));
        QVERIFY(start.errors().contains("Cannot tell whether this runs already"));
        QCOMPARE(snapshotOf(elsewhere()), QStringList());
    }

    void lockThatOthersCanReachIsRefused_data()
    {
        QTest::addColumn<bool>("foreign");
        QTest::newRow("86 lock that everyone may write to") << false;
        QTest::newRow("86 lock of another user") << true;
    }

    void lockThatOthersCanReachIsRefused()
    {
        QFETCH(const bool, foreign);
        const auto lock = lockOfAnEarlierStart();
        fs::permissions(lock, fs::perms(0666));
        if (foreign && ::chown(lock.c_str(), 65534, 65534) != 0)
            QSKIP("only root can make a file of another owner");
        if (foreign)
            fs::permissions(lock, fs::perms(0600));
        FileDescriptor held;
        CHECKED(holdLock(lock, held));
        Start start(folder());
        QVERIFY(comesTrue([&] { return start.says("first"); }));
    }

    void firstThatDoesNotAnswerIsReported_data()
    {
        QTest::addColumn<bool>("socket");
        QTest::newRow("86 lock held, nobody answers") << false;
        QTest::newRow("86 lock held, another user's socket answers") << true;
    }

    void firstThatDoesNotAnswerIsReported()
    {
        QFETCH(const bool, socket);
        installAres();
        saveGame();
        {
            Window first(m_sites->origin());
            QVERIFY(comesTrue([&] { return !only(runtime(), ".socket").empty(); }));
        }
        const auto lock = only(runtime(), ".lock");
        FileDescriptor held;
        CHECKED(holdLock(lock, held));
        QLocalServer impostor;
        const auto place = fs::path(lock).replace_extension(".socket");
        CHECKED(answerAt(place, impostor));
        if (!socket)
            fs::remove(place);
        else if (::chown(place.c_str(), 65534, 65534) != 0)
            QSKIP("only root can make a socket of another owner");
        Window second(m_sites->origin());
        QVERIFY(comesTrue([&] { return second.hasEnded(); }));
        QCOMPARE(second.exitCode(), EXIT_FAILURE);
        QVERIFY(second.errors().contains("Cartloom is already running and does not answer.\n"));
    }

    void longPathIsNoObstacle_data() { addOnlyRow("86 a path longer than a socket's address"); }

    void longPathIsNoObstacle()
    {
        const auto home = m_sandbox->home() / std::string(200, 'x');
        fs::create_directories(home);
        for (const bool hasRuntime : {true, false}) {
            fs::permissions(home, fs::perms::owner_all);
            hasRuntime ? qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(home.native()))
                       : qunsetenv("XDG_RUNTIME_DIR");
            Start first(home / "Storage");
            QVERIFY(comesTrue([&] { return first.says("first"); }));
            Start second(home / "Storage");
            QVERIFY(comesTrue([&] { return second.says("second"); }));
        }
    }

    void resetKeepsTheFallback_data() { addOnlyRow("86 a reset while the lock lies in the storage folder"); }

    void resetKeepsTheFallback()
    {
        qunsetenv("XDG_RUNTIME_DIR");
        Start first(Paths::support());
        QVERIFY(comesTrue([&] { return first.says("first"); }));
        installAres();
        m_model->reset();
        Paths::removeLeftovers();
        Start second(Paths::support());
        QVERIFY(comesTrue([&] { return second.says("second"); }));
    }

private:
    QByteArray m_formerRuntime;
};

QTEST_GUILESS_MAIN(InstancePlaceTest)
#include "tst_InstancePlace.moc"
