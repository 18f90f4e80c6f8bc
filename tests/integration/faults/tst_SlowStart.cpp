// SPDX-License-Identifier: MIT
#include "platform/Text.h"
#include "support/AresBundle.h"
#include "support/EventLoopWait.h"
#include "support/FaultTest.h"
#include "support/LauncherProcess.h"

#include <QLocalServer>
#include <QtTest>

#include <sys/stat.h>

namespace fs = std::filesystem;
using namespace cartloom;

/// Whole launchers on a display, among things that never answer.
class SlowStartTest : public FaultTest
{
    Q_OBJECT

    [[nodiscard]] fs::path preferences() const { return m_sandbox->home() / "config/Cartloom/Cartloom.conf"; }
    [[nodiscard]] fs::path bus() const { return m_sandbox->scratch() / "bus"; }

private Q_SLOTS:
    void init()
    {
        FaultTest::init();
        for (const auto* const name : {"XDG_RUNTIME_DIR", "DBUS_SESSION_BUS_ADDRESS"})
            m_former[name] = qgetenv(name);
        fs::permissions(m_sandbox->scratch(), fs::perms::owner_all);
        qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(m_sandbox->scratch().native()));
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    }

    void cleanup()
    {
        for (const auto& [name, value] : m_former)
            value.isNull() ? qunsetenv(name) : qputenv(name, value);
        FaultTest::cleanup();
    }

    void windowIsShown_data()
    {
        QTest::addColumn<bool>("pipe");
        QTest::addColumn<bool>("hungBus");
        QTest::newRow("91 preferences as a pipe") << true << false;
        QTest::newRow("91 session bus that does not answer") << false << true;
    }

    void windowIsShown()
    {
        QFETCH(const bool, pipe);
        QFETCH(const bool, hungBus);
        installAres();
        saveGame();
        if (pipe) {
            fs::create_directories(preferences().parent_path());
            QCOMPARE(::mkfifo(preferences().c_str(), 0600), 0);
        }
        // It accepts whoever comes, and says nothing.
        QLocalServer silent;
        const auto address = "unix:path=" + QByteArray::fromStdString(bus().native());
        if (hungBus) {
            QVERIFY(silent.listen(toText(bus())));
            qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        }
        const auto seen = m_sandbox->scratch() / "seen";
        const auto ended = m_sandbox->scratch() / "ended";
        scriptChild({QStringLiteral("variable DBUS_SESSION_BUS_ADDRESS ") + toText(seen),
                     QStringLiteral("touch ") + toText(ended)});

        Window window(m_sites->origin());
        QVERIFY(comesTrue([&] { return window.says("shown"); }));
        // The emulator is not kept from what may answer again.
        QVERIFY(comesTrue([&] { return fs::exists(ended); }));
        QCOMPARE(readFile(seen), hungBus ? address : QByteArray());
        window.closeWindow();
        QVERIFY(comesTrue([&] { return window.hasEndedWell(); }));
    }

private:
    std::map<const char*, QByteArray> m_former;
};

QTEST_GUILESS_MAIN(SlowStartTest)
#include "tst_SlowStart.moc"
