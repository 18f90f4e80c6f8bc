// SPDX-License-Identifier: MIT
#include "core/PreferenceKeys.h"
#include "platform/Preferences.h"
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/AresBundle.h"
#include "support/Checked.h"
#include "support/FaultTest.h"

#include <QtTest>

#include <cerrno>

#include <dlfcn.h>
#include <spawn.h>

namespace fs = std::filesystem;
using namespace cartloom;
using Stage = AppModel::Stage;

namespace
{

const auto hint =
    QStringLiteral("\n\nIf macOS blocked Ares, open System Settings, then Privacy and Security, "
                   "scroll down and click Open Anyway next to ares.");
const auto putBack = QStringLiteral("\n\nThe new Ares did not work, so the previous version was put back.");

/// Reported in place of the next starts of a program, unless 0.
int startFailure = 0;

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

/// Programs that cannot be started.
class FailedStartTest : public FaultTest
{
    Q_OBJECT

    [[nodiscard]] static fs::path app() { return Paths::ares() / "ares.app"; }
    [[nodiscard]] static fs::path program() { return app() / "Contents/MacOS/ares"; }

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

private Q_SLOTS:
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
};

QTEST_GUILESS_MAIN(FailedStartTest)
#include "tst_FailedStart.moc"
