// SPDX-License-Identifier: MIT
#include "core/Paths.h"
#include "platform/Text.h"
#include "support/AresBundle.h"
#include "support/EventLoopWait.h"
#include "support/FaultTest.h"

#include <QDir>
#include <QProcess>
#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

/// The launcher with its window, which presses its button at once; it ends with this object at the latest.
class Window
{
public:
    explicit Window(const QUrl& origin)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(WINDOW_CHILD), {origin.toString(), QStringLiteral("play")});
    }
    ~Window() { kill(); }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    void close() { m_process.write("close\n"); }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    [[nodiscard]] bool isRunning() const { return m_process.state() == QProcess::Running; }
    [[nodiscard]] bool hasEndedWell() const
    {
        return m_process.state() == QProcess::NotRunning && m_process.exitStatus() == QProcess::NormalExit &&
               m_process.exitCode() == 0;
    }

private:
    QProcess m_process;
};

} // namespace

/// Launchers that end before their emulator, or of which there are two.
class FaultsInstancesTest : public FaultTest
{
    Q_OBJECT

    [[nodiscard]] fs::path runtime() const { return m_sandbox->scratch() / "run"; }
    [[nodiscard]] fs::path started() const { return m_sandbox->scratch() / "started"; }
    [[nodiscard]] fs::path proceed() const { return m_sandbox->scratch() / "proceed"; }
    [[nodiscard]] fs::path ended() const { return m_sandbox->scratch() / "ended"; }

    /// Everything installed, and an emulator that runs until it is told and then writes to its error stream.
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

    [[nodiscard]] QStringList locks() const
    {
        return QDir(toText(runtime()))
            .entryList({QStringLiteral("*.lock"), QStringLiteral("*.socket")}, QDir::System | QDir::Files);
    }

    [[nodiscard]] static bool exists(const fs::path& file)
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

    void theLauncherEndsFirst_data()
    {
        QTest::addColumn<bool>("killed");
        QTest::newRow("64 the launcher quits while the emulator plays") << false;
        QTest::newRow("64 the launcher is killed while the emulator plays") << true;
    }

    void theLauncherEndsFirst()
    {
        QFETCH(const bool, killed);
        arrange();
        Window window(m_sites->origin());
        QVERIFY(exists(started()));
        killed ? window.kill() : window.close();
        QVERIFY(comesTrue([&] { return !window.isRunning(); }));
        QCOMPARE(window.hasEndedWell(), !killed);
        QVERIFY(!fs::exists(ended()));
        writeFile(proceed(), "");
        QVERIFY(exists(ended()));
        nothingChanged();
        pressPlays();
        QCOMPARE(m_sites->asked(), QStringList());
    }

    void aSecondStart_data() { addOnlyRow("68 a second start while one runs"); }

    void aSecondStart()
    {
        arrange();
        Window first(m_sites->origin());
        QVERIFY(exists(started()));
        fs::remove(started());
        Window second(m_sites->origin());
        QVERIFY(comesTrue([&] { return second.hasEndedWell(); }));
        QVERIFY(first.isRunning());
        // The second has not pressed the button too.
        QVERIFY(!fs::exists(started()));
        nothingChanged();
        writeFile(proceed(), "");
        QVERIFY(exists(ended()));
    }

    void aStaleLock_data() { addOnlyRow("69 a stale lock"); }

    void aStaleLock()
    {
        arrange();
        Window killed(m_sites->origin());
        QVERIFY(exists(started()));
        killed.kill();
        QCOMPARE(locks().size(), 2);
        fs::remove(started());
        Window next(m_sites->origin());
        QVERIFY(exists(started()));
        nothingChanged();
        writeFile(proceed(), "");
        QVERIFY(exists(ended()));
    }

private:
    QByteArray m_formerRuntime;
};

QTEST_GUILESS_MAIN(FaultsInstancesTest)
#include "tst_FaultsInstances.moc"
