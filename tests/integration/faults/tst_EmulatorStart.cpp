// SPDX-License-Identifier: MIT
#include "emulator/Launcher.h"
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/AresBundle.h"
#include "support/Checked.h"
#include "support/EventLoopWait.h"
#include "support/FaultTest.h"

#include <QDir>
#include <QtTest>

#include <chrono>
#include <csignal>
#include <future>

#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace cartloom;
using namespace std::chrono_literals;
using Stage = AppModel::Stage;

namespace
{

qsizetype entriesOf(const char* folder)
{
    return QDir(QString::fromLatin1(folder)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size();
}

QString command(const char* word, const fs::path& file)
{
    return QString::fromLatin1(word) + u' ' + toText(file);
}

} // namespace

/// How the emulator is started, and when it ends.
class EmulatorStartTest : public FaultTest
{
    Q_OBJECT

    [[nodiscard]] static fs::path app() { return Paths::ares() / "ares.app"; }
    [[nodiscard]] static fs::path program() { return app() / "Contents/MacOS/ares"; }
    [[nodiscard]] fs::path proceed() const { return m_sandbox->scratch() / "proceed"; }

    void arrange()
    {
        installAres();
        saveGame();
        restart();
    }

    /// One run of the scripted child, without a model.
    static std::future<LaunchResult> launch(Launcher& launcher, const QStringList& script)
    {
        scriptChild(script);
        auto result = std::make_shared<std::promise<LaunchResult>>();
        launcher.launch(app(), "/game.z64", false,
                        [result](const LaunchResult& ended) { result->set_value(ended); });
        return result->get_future();
    }

private Q_SLOTS:
    void initTestCase() { std::signal(SIGPIPE, SIG_IGN); }

    void argumentsArePassedUnchanged_data()
    {
        QTest::addColumn<bool>("fullscreen");
        QTest::addColumn<QString>("rom");
        const auto rom = QStringLiteral("game.z64");
        QTest::newRow("windowed") << false << rom;
        QTest::newRow("fullscreen") << true << rom;
        QTest::newRow("ROM path with blanks, quotes and a variable")
            << false << QStringLiteral("a \"g\" 'x' $HOME.z64");
    }

    void argumentsArePassedUnchanged()
    {
        QFETCH(const bool, fullscreen);
        QFETCH(const QString, rom);
        const auto path = m_sandbox->scratch() / toPath(rom);
        writeSparse(path, bigEndianHeader, 10'000'000);
        arrange();
        m_model->setFullscreen(fullscreen);
        const auto file = m_sandbox->scratch() / "arguments";
        scriptChild({command("args", file)});
        chooseROM(path);
        QVERIFY(goesThrough(Stage::playing));
        QStringList expected{QStringLiteral("--system"), QStringLiteral("Nintendo 64"), toText(path)};
        if (fullscreen)
            expected.insert(2, QStringLiteral("--fullscreen"));
        QCOMPARE(QString::fromUtf8(readFile(file)), expected.join(u'\n') + u'\n');
    }

    void workingDirectoryIsInheritedAndOutputIsDropped()
    {
        installAres();
        const auto folder = fs::current_path();
        const auto file = m_sandbox->scratch() / "surroundings";
        Launcher launcher;
        launch(launcher, {command("surroundings", file)}).wait();
        QCOMPARE(QString::fromUtf8(readFile(file)), toText(folder) + QStringLiteral("\nnull device\n"));
    }

    void exitIsReportedOnAnotherThread()
    {
        installAres();
        Launcher launcher;
        std::promise<std::thread::id> thread;
        launcher.launch(app(), "/game.z64", false,
                        [&](const LaunchResult&) { thread.set_value(std::this_thread::get_id()); });
        QVERIFY(thread.get_future().get() != std::this_thread::get_id());
    }

    void failedStartLeavesNoProcess()
    {
        installAres();
        writeFile(program(), "no program");
        Launcher launcher;
        QVERIFY_THROWS_EXCEPTION(std::system_error, launch(launcher, {}));
        QVERIFY(!launcher.process());
    }

    void emulatorHasASessionOfItsOwn()
    {
        installAres();
        Launcher launcher;
        auto ended = launch(launcher, {command("wait", proceed())});
        const auto emulator = launcher.process().value().id();
        QCOMPARE(::getsid(emulator), emulator);
        writeFile(proceed(), "");
        ended.wait();
    }

    void emulatorOutlivesItsLauncher()
    {
        installAres();
        const auto done = m_sandbox->scratch() / "done";
        std::future<LaunchResult> result;
        {
            Launcher shortLived;
            result = launch(shortLived, {command("wait", proceed()), QStringLiteral("err still writing"),
                                         command("touch", done)});
        }
        QVERIFY(!fs::exists(done));
        writeFile(proceed(), "");
        QCOMPARE(result.get().errorText, QStringLiteral("still writing\n"));
        QVERIFY(fs::exists(done));
    }

    void secondStartLeavesTheFirstEmulatorAlone()
    {
        installAres();
        Launcher launcher;
        auto first = launch(launcher, {command("wait", proceed()), QStringLiteral("exit 1")});
        const auto firstProcess = launcher.process().value().id();
        const auto second = launch(launcher, {QStringLiteral("exit 2")}).get();
        QCOMPARE(second.status, 2);
        QVERIFY(second.seconds > 0);
        QVERIFY(launcher.process().value().id() != firstProcess);
        QCOMPARE(first.wait_for(0s), std::future_status::timeout);
        writeFile(proceed(), "");
        QCOMPARE(first.get().status, 1);
    }

    void manyStartsLeakNothing_data() { addOnlyRow("65 200 starts in a row"); }

    void manyStartsLeakNothing()
    {
        arrange();
        CHECKED(pressPlays());
        const auto descriptors = entriesOf("/proc/self/fd");
        const auto threads = entriesOf("/proc/self/task");
        remember();
        for (int i = 0; i < 200; ++i) {
            scriptChild({QStringLiteral("exit %1").arg(i)});
            m_model->play();
            QVERIFY(goesThrough(Stage::playing));
            QVERIFY2(message().startsWith(QStringLiteral("Ares stopped right away (exit code %1).").arg(i)),
                     qPrintable(message()));
        }
        CHECKED(nothingChanged());
        QVERIFY(comesTrue([&] { return entriesOf("/proc/self/task") <= threads; }));
        QCOMPARE(entriesOf("/proc/self/fd"), descriptors);
        QCOMPARE(::waitpid(-1, nullptr, WNOHANG), -1);
        QCOMPARE(errno, ECHILD);
    }
};

QTEST_GUILESS_MAIN(EmulatorStartTest)
#include "tst_EmulatorStart.moc"
