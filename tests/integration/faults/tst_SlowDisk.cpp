// SPDX-License-Identifier: MIT
#include "core/PreferenceKeys.h"
#include "platform/Preferences.h"
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/AresBundle.h"
#include "support/Checked.h"
#include "support/EventLoopWait.h"
#include "support/FaultTest.h"

#include <QtTest>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

#include <dlfcn.h>
#include <sys/stat.h>

namespace fs = std::filesystem;
using namespace cartloom;
using namespace std::chrono_literals;
using Stage = AppModel::Stage;

namespace
{

/// The path about which the system does not answer until it is empty.
std::string hungPath;
std::mutex hungMutex;
std::condition_variable released;
std::atomic<int> blocked = 0;

} // namespace

/// Interposed: blocks for one path until the test releases it, or for long enough to fail the test.
extern "C" int stat(const char* path, struct stat* status)
{
    {
        std::unique_lock lock(hungMutex);
        if (path == hungPath) {
            ++blocked;
            static_cast<void>(released.wait_for(lock, 45s, [] { return hungPath.empty(); }));
            --blocked;
        }
    }
    return reinterpret_cast<decltype(&stat)>(::dlsym(RTLD_NEXT, "stat"))(path, status);
}

/// The emulator that the player chose, on a volume that does not answer.
class SlowDiskTest : public FaultTest
{
    Q_OBJECT

    [[nodiscard]] fs::path own() const { return m_sandbox->scratch() / "own/ares.app"; }

    /// Starts on a volume that hangs, with a game saved.
    void startHung()
    {
        saveGame();
        Preferences::setText(PreferenceKeys::externalAres, toText(own()));
        {
            const std::lock_guard guard(hungMutex);
            hungPath = own();
        }
        restart();
        QCOMPARE(blocked, 1);
        QCOMPARE(m_model->stage(), Stage::idle);
        QCOMPARE(m_model->usingExternalAres(), false);
    }

    static void release()
    {
        {
            const std::lock_guard guard(hungMutex);
            hungPath.clear();
        }
        released.notify_all();
    }

    /// Presses the button, which waits for the volume.
    void pressInVain()
    {
        remember();
        m_model->play();
        QVERIFY(comesTo(Stage::gettingAres));
        QCOMPARE(m_model->canCancel(), true);
        QCOMPARE(blocked, 1);
    }

private Q_SLOTS:
    void cleanup()
    {
        release();
        QVERIFY(comesTrue([] { return blocked == 0; }));
        FaultTest::cleanup();
    }

    void startDoesNotWait_data() { addOnlyRow("91 slow disk: the window comes without it"); }

    void startDoesNotWait()
    {
        makeAresApp(own().parent_path());
        installAres();
        CHECKED(startHung());
        QCOMPARE(m_model->setupDone(), true);
        QCOMPARE(m_model->aresVersion(), QStringLiteral("v146"));
        release();
        QVERIFY(comesTrue([this] { return m_model->usingExternalAres(); }));
        QCOMPARE(m_model->setupDone(), true);
        QCOMPARE(m_model->aresVersion(), std::nullopt);
        QCOMPARE(m_model->locateAres(), own());
    }

    void pressWaitsForTheDisk_data() { addOnlyRow("91 slow disk: a press waits and plays"); }

    void pressWaitsForTheDisk()
    {
        makeAresApp(own().parent_path());
        CHECKED(startHung());
        CHECKED(pressInVain());
        release();
        QVERIFY(goesThrough(Stage::playing));
        QCOMPARE(m_recorder->stages(), (QStringList{QStringLiteral("idle"), QStringLiteral("gettingAres"),
                                                    QStringLiteral("idle"), QStringLiteral("starting"),
                                                    QStringLiteral("playing"), QStringLiteral("idle")}));
        QCOMPARE(m_model->usingExternalAres(), true);
        QCOMPARE(m_sites->asked(), QStringList());
        CHECKED(nothingChanged());
    }

    void waitIsCancelled_data() { addOnlyRow("91 slow disk: the wait is cancelled"); }

    void waitIsCancelled()
    {
        makeAresApp(own().parent_path());
        CHECKED(startHung());
        CHECKED(pressInVain());
        m_model->cancel();
        QVERIFY(comesToRest());
        QCOMPARE(m_model->notice(), QStringLiteral("Cancelled. Nothing was changed."));
        QCOMPARE(blocked, 1);
        CHECKED(pressInVain());
        release();
        QVERIFY(goesThrough(Stage::playing));
        QCOMPARE(m_sites->asked(), QStringList());
    }

    void missingCopyIsReplacedAfterTheWait_data() { addOnlyRow("91 slow disk: nothing is there after all"); }

    void missingCopyIsReplacedAfterTheWait()
    {
        CHECKED(startHung());
        CHECKED(pressInVain());
        release();
        QVERIFY(goesThrough(Stage::playing));
        QCOMPARE(m_model->usingExternalAres(), false);
        QCOMPARE(installedTag(), QByteArray("v147"));
    }

    void resetForgetsTheDisk_data() { addOnlyRow("91 slow disk: a reset while it hangs"); }

    void resetForgetsTheDisk()
    {
        makeAresApp(own().parent_path());
        CHECKED(startHung());
        m_model->reset();
        QCOMPARE(blocked, 1);
        CHECKED(nextPressPlays());
        release();
        QVERIFY(comesTrue([] { return blocked == 0; }));
        QCOMPARE(m_model->usingExternalAres(), false);
    }
};

QTEST_GUILESS_MAIN(SlowDiskTest)
#include "tst_SlowDisk.moc"
