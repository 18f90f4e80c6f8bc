// SPDX-License-Identifier: MIT
#include "core/PreferenceKeys.h"
#include "emulator/Launcher.h"
#include "platform/Preferences.h"
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

#include <dlfcn.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace cartloom;
using namespace std::chrono_literals;
using Stage = AppModel::Stage;

namespace
{

const auto hint =
    QStringLiteral("\n\nIf macOS blocked Ares, open System Settings, then Privacy and Security, "
                   "scroll down and click Open Anyway next to ares.");
const auto putBack = QStringLiteral("\n\nThe new Ares did not work, so the previous version was put back.");

qsizetype entriesOf(const char* folder)
{
    return QDir(QString::fromLatin1(folder)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size();
}

/// Reported in place of the next starts of a program, unless 0.
int startFailure = 0;

QString command(const char* word, const fs::path& file)
{
    return QString::fromLatin1(word) + u' ' + toText(file);
}

} // namespace

/// Interposed: fails as the test asks.
extern "C" int posix_spawn(pid_t* process, const char* program, const posix_spawn_file_actions_t* actions,
                           const posix_spawnattr_t* attributes, char* const arguments[],
                           char* const environment[])
{
    if (startFailure != 0)
        return startFailure;
    const auto real = reinterpret_cast<decltype(&posix_spawn)>(::dlsym(RTLD_NEXT, "posix_spawn"));
    return real(process, program, actions, attributes, arguments, environment);
}

/// How the emulator is started, and programs that cannot be.
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

    /// As after an update that has not been started yet.
    void arrangeUpdate()
    {
        installAres("v146");
        fs::rename(Paths::ares(), Paths::aresOld());
        installAres("v147");
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

    void unusableProgramIsReported_data()
    {
        QTest::addColumn<QString>("what");
        for (const char* const what :
             {"missing", "not executable", "a folder", "a link to nowhere", "of an unknown format"})
            QTest::addRow("56 program is %s", what) << QString::fromLatin1(what);
    }

    void unusableProgramIsReported()
    {
        QFETCH(const QString, what);
        const bool isOfAnotherFormat = what == QStringLiteral("of an unknown format");
        arrange();
        fs::rename(program(), m_sandbox->scratch() / "good");
        if (isOfAnotherFormat || what == QStringLiteral("not executable"))
            writeFile(program(), "no program");
        if (isOfAnotherFormat)
            fs::permissions(program(), fs::perms::owner_all);
        if (what == QStringLiteral("a folder"))
            fs::create_directory(program());
        if (what == QStringLiteral("a link to nowhere"))
            fs::create_symlink("nowhere", program());

        Failure failure{QStringLiteral("Could not find the program inside ares.app."), toText(app())};
        if (isOfAnotherFormat) {
            failure = systemFailure(QStringLiteral("Starting Ares"), ENOEXEC);
            failure.message += hint;
        }
        CHECKED(press());
        CHECKED(shows(failure));
        CHECKED(nothingChanged());
        QCOMPARE(m_sites->asked(), QStringList());
        fs::remove_all(program());
        fs::rename(m_sandbox->scratch() / "good", program());
        nextPressPlays();
    }

    void onlyAProgramThatCannotRunIsRolledBack_data()
    {
        QTest::addColumn<int>("error");
        QTest::addColumn<bool>("isProgramsOwn");
        QTest::newRow("56 unknown format") << ENOEXEC << true;
        QTest::newRow("56 missing, or what runs it") << ENOENT << true;
        QTest::newRow("56 too many open files") << EMFILE << false;
        QTest::newRow("56 too many open files in the system") << ENFILE << false;
        QTest::newRow("56 no memory") << ENOMEM << false;
        QTest::newRow("56 too many processes") << EAGAIN << false;
        QTest::newRow("56 busy file") << ETXTBSY << false;
        QTest::newRow("56 not readable") << EIO << false;
        QTest::newRow("56 forbidden") << EACCES << false;
        QTest::newRow("56 not permitted") << EPERM << false;
    }

    void onlyAProgramThatCannotRunIsRolledBack()
    {
        QFETCH(const int, error);
        QFETCH(const bool, isProgramsOwn);
        arrangeUpdate();
        startFailure = error;
        CHECKED(press());
        startFailure = 0;
        Failure failure = systemFailure(QStringLiteral("Starting Ares"), error);
        failure.message += isProgramsOwn ? putBack : hint;
        CHECKED(shows(failure));
        QCOMPARE(installedTag(), isProgramsOwn ? QByteArray("v146") : QByteArray("v147"));
        QCOMPARE(fs::exists(Paths::aresOld()), !isProgramsOwn);
        if (!isProgramsOwn)
            CHECKED(nothingChanged());
        m_model->play();
        QVERIFY(goesThrough(Stage::playing));
    }

    void updateWithoutAProgramIsRolledBack()
    {
        arrangeUpdate();
        fs::remove(program());
        CHECKED(press());
        CHECKED(
            shows({QStringLiteral("Could not find the program inside ares.app.") + putBack, toText(app())}));
        QCOMPARE(installedTag(), QByteArray("v146"));
        nextPressPlays();
    }

    /// The preference named a path without anything when the model was made.
    void copyOfThePlayersIsNeverRolledBack()
    {
        const auto external = m_sandbox->scratch() / "own/ares.app";
        Preferences::setText(PreferenceKeys::externalAres, toText(external));
        arrangeUpdate();
        makeAresApp(external.parent_path());
        startFailure = ENOEXEC;
        CHECKED(press());
        startFailure = 0;
        Failure failure = systemFailure(QStringLiteral("Starting Ares"), ENOEXEC);
        failure.message += hint;
        CHECKED(shows(failure));
        nothingChanged();
    }

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
