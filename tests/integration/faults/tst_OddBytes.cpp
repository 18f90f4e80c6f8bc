// SPDX-License-Identifier: MIT
#include "core/PreferenceKeys.h"
#include "platform/Preferences.h"
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/AresBundle.h"
#include "support/Checked.h"
#include "support/EventLoopWait.h"
#include "support/FaultTest.h"
#include "support/LauncherProcess.h"

#include <QtTest>

#include <pwd.h>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

/// The home folder in the user database; that of the system while it is empty.
std::string registeredHome;

constexpr std::array places{"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"};

} // namespace

/// Interposed: registers the test's home folder.
extern "C" int getpwuid_r(uid_t, passwd* entry, char*, size_t, passwd** result)
{
    entry->pw_dir = registeredHome.data();
    *result = entry;
    return 0;
}

/// Paths that are not UTF-8, or that begin as an option does.
class OddBytesTest : public FaultTest
{
    Q_OBJECT

    [[nodiscard]] fs::path seen() const { return m_sandbox->scratch() / "arguments"; }
    [[nodiscard]] fs::path ended() const { return m_sandbox->scratch() / "ended"; }

    static void addRowForEachName()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("93 no UTF-8 at all") << QByteArray("\xFF\xFE");
        QTest::newRow("93 truncated character") << QByteArray("ab\xE6\x97");
        QTest::newRow("93 surrogate") << QByteArray("\xED\xB2\x80");
        QTest::newRow("93 mixed, like an option") << QByteArray("-\xFFä\x80");
    }

    [[nodiscard]] static fs::path named(const fs::path& folder)
    {
        QFETCH(const QByteArray, name);
        return folder / name.toStdString();
    }

    [[nodiscard]] static QByteArray bytesOf(const fs::path& path)
    {
        return QByteArray::fromStdString(path.native());
    }

    [[nodiscard]] QByteArray lastArgument() const { return readFile(seen()).split('\n').last(2).first(); }

    /// The home and nothing else decides where things are kept.
    void moveHome(const QByteArray& home)
    {
        for (const auto* const variable : places)
            qunsetenv(variable);
        qputenv("HOME", home);
        scriptChild({QStringLiteral("args ") + toText(seen()), QStringLiteral("touch ") + toText(ended())});
    }

    fs::path makeROM(const fs::path& file)
    {
        writeSparse(file, bigEndianHeader, 2'000'000);
        return file;
    }

    void playsROM(const fs::path& rom)
    {
        QVERIFY(goesThrough(AppModel::Stage::playing));
        QCOMPARE(lastArgument(), bytesOf(rom));
    }

private Q_SLOTS:
    void init()
    {
        for (const auto* const variable : places)
            m_former[variable] = qgetenv(variable);
        FaultTest::init();
        registeredHome = m_sandbox->home();
        fs::current_path(m_sandbox->scratch());
    }

    void cleanup()
    {
        fs::current_path("/");
        FaultTest::cleanup();
        for (const auto& [variable, value] : m_former)
            value.isNull() ? qunsetenv(variable) : qputenv(variable, value);
    }

    void firstPlayStaysInTheHome_data() { addRowForEachName(); }

    /// A launcher with its window, from nothing to the game.
    void firstPlayStaysInTheHome()
    {
        const auto homes = m_sandbox->home() / "homes";
        const auto home = named(homes);
        fs::create_directories(home);
        moveHome(bytesOf(home));
        Window window(m_sites->origin());
        QVERIFY(comesTrue([&] { return fs::exists(ended()); }));
        QCOMPARE(Paths::support(), home / ".local/share/Quillet64 Player");
        QCOMPARE(lastArgument(), bytesOf(Paths::gameFile()));
        QVERIFY(fs::exists(Paths::ares() / "ares.app"));
        // The lock is in the storage folder; a second start finds it there.
        Window second(m_sites->origin());
        QVERIFY(comesTrue([&] { return second.hasEndedWell(); }));
        window.closeWindow();
        QVERIFY(comesTrue([&] { return window.hasEndedWell(); }));
        QCOMPARE(entriesOf(homes), 1);
    }

    void secondPlayAndImportWork_data() { addRowForEachName(); }

    void secondPlayAndImportWork()
    {
        const auto home = named(m_sandbox->home());
        moveHome(bytesOf(home));
        restart();
        CHECKED(pressPlays());
        CHECKED(pressPlays());
        const auto source = named(m_sandbox->scratch());
        writeSparse(source, bigEndianHeader, 11'000'000);
        m_model->chooseExistingGameFile();
        m_model->openPanel()->confirm(toUrl(source));
        QCOMPARE(m_model->notice(), QStringLiteral("Game file added. Press the button to play."));
        QCOMPARE(fs::file_size(Paths::gameFile()), 11'000'000U);
    }

    void preferencesStayInTheHome_data() { addRowForEachName(); }

    void preferencesStayInTheHome()
    {
        const auto homes = m_sandbox->home() / "homes";
        const auto home = named(homes);
        moveHome(bytesOf(home));
        const auto app = makeAresApp(named(m_sandbox->scratch()));
        restart();
        m_model->setFullscreen(true);
        // As the window does with an offered copy.
        m_model->offerExternal = app;
        m_model->useExistingAres(m_model->property("offerExternal").toString());
        const auto store = home / ".config/Cartloom/Cartloom.conf";
        QVERIFY(fs::exists(store));
        QCOMPARE(entriesOf(homes), 1);
        // Qt reads a file of another size again.
        writeFile(store, readFile(store) + '\n');
        restart();
        QCOMPARE(m_model->fullscreen(), true);
        QCOMPARE(m_model->externalPreference(), app);
        m_model->reset();
        QCOMPARE(m_model->externalPreference(), std::nullopt);
    }

    void anyROMIsPlayed_data() { addRowForEachName(); }

    void anyROMIsPlayed()
    {
        const auto rom = makeROM(named(m_sandbox->scratch()));
        installAres();
        scriptChild({QStringLiteral("args ") + toText(seen())});
        restart();
        m_model->openROM();
        m_model->openPanel()->confirm(toUrl(rom));
        CHECKED(playsROM(rom));
        m_model->openDropped({toUrl(rom)});
        CHECKED(playsROM(rom));
    }

    void unusableHomeIsTheRegisteredOne_data()
    {
        QTest::addColumn<QByteArray>("home");
        QTest::newRow("93 home like an option") << QByteArray("-x");
        QTest::newRow("93 relative home") << QByteArray("x");
        QTest::newRow("93 empty home") << QByteArray("");
    }

    void unusableHomeIsTheRegisteredOne()
    {
        QFETCH(const QByteArray, home);
        moveHome(home);
        restart();
        m_model->setFullscreen(true);
        m_model->play();
        QVERIFY(goesThrough(AppModel::Stage::playing));
        QCOMPARE(lastArgument(), bytesOf(m_sandbox->home() / ".local/share/Quillet64 Player/Quillet64.z64"));
        QVERIFY(fs::exists(m_sandbox->home() / ".config/Cartloom/Cartloom.conf"));
        for (const char* const name : {"-x", "x", ".local", ".config"})
            QVERIFY(!fs::exists(name));
    }

    void relativeAddressIsNoGame_data() { addOnlyRow("93 a dropped address like an option"); }

    void relativeAddressIsNoGame()
    {
        installAres();
        makeROM(fs::current_path() / "--help");
        restart();
        m_model->openDropped({QUrl::fromEncoded("file:--help")});
        QCOMPARE(message(), QStringLiteral("Drop a game file that is on this computer."));
    }

private:
    std::map<const char*, QByteArray> m_former;
};

QTEST_GUILESS_MAIN(OddBytesTest)
#include "tst_OddBytes.moc"
