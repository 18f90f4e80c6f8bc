// SPDX-License-Identifier: MIT
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/AresBundle.h"
#include "support/Checked.h"
#include "support/EventLoopWait.h"
#include "support/FaultTest.h"
#include "support/LauncherProcess.h"

#include <QDir>
#include <QtTest>

#include <algorithm>
#include <csignal>
#include <list>

namespace fs = std::filesystem;
using namespace cartloom;

/// Several starts on one storage folder, and launchers that end before their emulator.
class SingleInstanceTest : public FaultTest
{
    Q_OBJECT

    [[nodiscard]] fs::path folder() const { return m_sandbox->home() / "data/Storage"; }
    [[nodiscard]] fs::path runtime() const { return m_sandbox->scratch() / "run"; }
    [[nodiscard]] fs::path started() const { return m_sandbox->scratch() / "started"; }
    [[nodiscard]] fs::path proceed() const { return m_sandbox->scratch() / "proceed"; }
    [[nodiscard]] fs::path ended() const { return m_sandbox->scratch() / "ended"; }

    /// Everything installed, and an emulator that runs until the file "proceed" exists, then writes errors.
    void arrange()
    {
        installAres();
        saveGame();
        restart();
        remember();
        scriptChild({QStringLiteral("touch ") + toText(started()),
                     QStringLiteral("wait ") + toText(proceed()), QStringLiteral("err-bytes 1000000"),
                     QStringLiteral("touch ") + toText(ended())});
    }

    [[nodiscard]] QStringList files(const char* pattern) const
    {
        return QDir(toText(runtime())).entryList({QString::fromLatin1(pattern)}, QDir::System | QDir::Files);
    }

    [[nodiscard]] static bool appears(const fs::path& file)
    {
        return comesTrue([&] { return fs::exists(file); });
    }

private Q_SLOTS:
    void init()
    {
        FaultTest::init();
        fs::create_directories(runtime());
        fs::permissions(runtime(), fs::perms::owner_all);
        m_formerRuntime = qgetenv("XDG_RUNTIME_DIR");
        qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(runtime().native()));
    }

    void cleanup()
    {
        qputenv("XDG_RUNTIME_DIR", m_formerRuntime);
        FaultTest::cleanup();
    }

    void emulatorOutlivesTheLauncher_data()
    {
        QTest::addColumn<bool>("killed");
        QTest::newRow("64 the launcher quits while the emulator plays") << false;
        QTest::newRow("64 the launcher is killed while the emulator plays") << true;
    }

    void emulatorOutlivesTheLauncher()
    {
        QFETCH(const bool, killed);
        arrange();
        Window window(m_sites->origin());
        QVERIFY(appears(started()));
        killed ? window.kill() : window.closeWindow();
        QVERIFY(comesTrue([&] { return !window.isRunning(); }));
        QCOMPARE(window.hasEndedWell(), !killed);
        QVERIFY(!fs::exists(ended()));
        writeFile(proceed(), "");
        QVERIFY(appears(ended()));
        CHECKED(nothingChanged());
        CHECKED(pressPlays());
        QCOMPARE(m_sites->asked(), QStringList());
    }

    void secondLauncherEndsWithoutPlaying_data() { addOnlyRow("68 a second start while one runs"); }

    void secondLauncherEndsWithoutPlaying()
    {
        arrange();
        Window first(m_sites->origin());
        QVERIFY(appears(started()));
        fs::remove(started());
        Window second(m_sites->origin());
        QVERIFY(comesTrue([&] { return second.hasEndedWell(); }));
        QVERIFY(first.isRunning());
        QVERIFY(!fs::exists(started()));
        CHECKED(nothingChanged());
        writeFile(proceed(), "");
        QVERIFY(appears(ended()));
    }

    void staleLockIsTakenOver_data() { addOnlyRow("69 a stale lock"); }

    /// The emulator of the killed launcher still runs, and does not keep the lock.
    void staleLockIsTakenOver()
    {
        arrange();
        Window killed(m_sites->origin());
        QVERIFY(appears(started()));
        killed.kill();
        QCOMPARE(files("*.lock").size() + files("*.socket").size(), 2);
        fs::remove(started());
        Window next(m_sites->origin());
        QVERIFY(appears(started()));
        Window second(m_sites->origin());
        QVERIFY(comesTrue([&] { return second.hasEndedWell(); }));
        CHECKED(nothingChanged());
        writeFile(proceed(), "");
        QVERIFY(appears(ended()));
    }

    void everySecondStartIsReportedToTheFirst()
    {
        Start first(folder());
        QVERIFY(comesTrue([&] { return first.says("first"); }));
        QCOMPARE(first.words(), QByteArrayList{"first"});
        QVERIFY(!fs::exists(folder()));
        for (int again = 1; again <= 2; ++again) {
            Start second(folder());
            QVERIFY(comesTrue([&] { return second.hasEndedWell(); }));
            QCOMPARE(second.words(), QByteArrayList{"second"});
            QVERIFY(comesTrue([&] { return first.words().count("again") == again; }));
        }
        QVERIFY(first.isRunning());
    }

    void differentFoldersAreIndependent()
    {
        Start one(folder());
        Start other(m_sandbox->home() / "data/Other");
        QVERIFY(comesTrue([&] { return one.says("first") && other.says("first"); }));
        QCOMPARE(one.words().size(), 1);
    }

    void linkedFolderIsTheSame()
    {
        fs::create_directories(folder());
        const fs::path link = m_sandbox->home() / "link";
        fs::create_directory_symlink(m_sandbox->home() / "data", link);
        Start first(folder());
        QVERIFY(comesTrue([&] { return first.says("first"); }));
        Start second(link / "Storage");
        QVERIFY(comesTrue([&] { return second.says("second"); }));
    }

    void nextStartAfterAnEndIsFirst()
    {
        Start gone(folder());
        QVERIFY(comesTrue([&] { return gone.says("first"); }));
        gone.signal(SIGTERM);
        QVERIFY(comesTrue([&] { return !gone.isRunning(); }));
        Start next(folder());
        QVERIFY(comesTrue([&] { return next.says("first"); }));
    }

    void hungFirstThatDiesIsSucceeded()
    {
        Start hanging(folder());
        QVERIFY(comesTrue([&] { return hanging.says("first"); }));
        hanging.signal(SIGSTOP);
        Start next(folder());
        QVERIFY(comesTrue([&] { return next.isRunning(); }));
        hanging.kill();
        QVERIFY(comesTrue([&] { return next.says("first"); }));
    }

    void oneOfManySimultaneousStartsIsFirst()
    {
        constexpr int count = 8;
        std::list<Start> starts;
        for (int i = 0; i < count; ++i)
            starts.emplace_back(folder());
        const auto saying = [&starts](const char* word) {
            return std::ranges::count_if(starts, [&](Start& start) { return start.says(word); });
        };
        QVERIFY(comesTrue([&] { return saying("second") == count - 1; }));
        QCOMPARE(saying("first"), 1);
        QVERIFY(comesTrue([&] { return std::ranges::count_if(starts, &Start::hasEndedWell) == count - 1; }));
        const auto first = std::ranges::find_if(starts, [](Start& start) { return start.says("first"); });
        QVERIFY(comesTrue([&] { return first->words().count("again") == count - 1; }));
        QVERIFY(first->isRunning());
    }

    void everyStartIsFirstIfThereCanBeNoLock()
    {
        {
            Start first(folder());
            QVERIFY(comesTrue([&] { return first.says("first"); }));
        }
        const QStringList locks = files("*.lock");
        QCOMPARE(locks.size(), 1);
        const fs::path lock = runtime() / toPath(locks.first());
        fs::remove(lock);
        fs::create_directories(lock);
        Start other(folder());
        QVERIFY(comesTrue([&] { return other.says("first"); }));
    }

private:
    QByteArray m_formerRuntime;
};

QTEST_GUILESS_MAIN(SingleInstanceTest)
#include "tst_SingleInstance.moc"
