// SPDX-License-Identifier: MIT
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/AresBundle.h"
#include "support/FlowTest.h"
#include "support/StandInTool.h"

#include <QProcess>
#include <QRegularExpression>
#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;
using Stage = AppModel::Stage;

/// The window of the whole launcher is closed in the middle of each kind of work: the process ends at once,
/// by itself and in good order, and leaves what a kill would leave, with which the next press plays.
class ClosedWindowTest : public FlowTest
{
    Q_OBJECT

    const QByteArray m_path = qgetenv("PATH");
    std::unique_ptr<QProcess> m_launcher;

    void startLauncher(const char* action = "play")
    {
        const auto runtime = m_sandbox->scratch() / "run";
        fs::create_directories(runtime);
        fs::permissions(runtime, fs::perms::owner_all);
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), toText(m_sandbox->home() / "config"));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), toText(runtime));
        m_launcher = std::make_unique<QProcess>();
        m_launcher->setProcessEnvironment(environment);
        m_launcher->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_launcher->start(QStringLiteral(WINDOW_CHILD),
                          {m_sites->origin().toString(), QString::fromLatin1(action)});
    }

    /// Whether the launcher ends as it should once its window is closed.
    bool closes()
    {
        if (m_launcher->state() != QProcess::Running)
            return false;
        m_launcher->write("\n");
        return m_launcher->waitForFinished() && m_launcher->exitStatus() == QProcess::NormalExit &&
               m_launcher->exitCode() == 0;
    }

    bool isAsked(const char* path) const
    {
        return QTest::qWaitFor([this, path] { return m_sites->asked().contains(QLatin1String(path)); },
                               30'000);
    }

    static bool appears(const fs::path& file)
    {
        return QTest::qWaitFor([&file] { return fs::exists(file); }, 30'000);
    }

    static bool hasEntry(const char* pattern)
    {
        return !Sandbox::storage().filter(QRegularExpression(QLatin1String(pattern))).isEmpty();
    }

    /// Whether, with everything in order again, a press of the button plays and nothing is left of before.
    bool playsAgain()
    {
        qputenv("PATH", m_path);
        scriptChild({});
        m_sites = std::make_unique<ScriptedSites>(m_sandbox->scratch() / "again");
        restart();
        m_model->play();
        const QStringList whole{QStringLiteral("Ares"), QStringLiteral("Quillet64.z64"),
                                QStringLiteral("ares-version.txt")};
        return goesThrough(Stage::playing) && Sandbox::storage() == whole;
    }

private Q_SLOTS:
    void cleanup()
    {
        if (m_launcher) {
            m_launcher->kill();
            m_launcher->waitForFinished();
            m_launcher.reset();
        }
        qputenv("PATH", m_path);
    }

    void whileAServerIsWaitedFor_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::newRow("67 the release") << QByteArray(ScriptedSites::latest);
        QTest::newRow("67 the emulator") << QByteArray(ScriptedSites::archive);
        QTest::newRow("67 the store page") << QByteArray(ScriptedSites::page);
        QTest::newRow("67 the form") << QByteArray(ScriptedSites::form);
        QTest::newRow("67 the game") << QByteArray(ScriptedSites::game);
    }

    void whileAServerIsWaitedFor()
    {
        QFETCH(const QByteArray, path);
        m_sites->answers[path].clear();
        startLauncher();
        QVERIFY(isAsked(path));
        QVERIFY(closes());
        QVERIFY(playsAgain());
    }

    void whileADownloadRuns_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("workFolder");
        QTest::newRow("67 of the emulator")
            << QByteArray(ScriptedSites::archive) << QByteArray("^download-ares-");
        QTest::newRow("67 of the game") << QByteArray(ScriptedSites::game) << QByteArray("^download-game-");
    }

    void whileADownloadRuns()
    {
        QFETCH(const QByteArray, path);
        QFETCH(const QByteArray, workFolder);
        m_sites->answers[path].chop(1);
        m_sites->heldOpen.insert(path);
        startLauncher();
        QVERIFY(isAsked(path));
        QTRY_VERIFY(hasEntry(workFolder));
        QVERIFY(closes());
        // As after a kill: nobody has cleared up, until the next download begins.
        QVERIFY(hasEntry(workFolder));
        QVERIFY(playsAgain());
    }

#ifdef Q_OS_LINUX
    void whileTheEmulatorIsUnpacked_data()
    {
        QTest::addColumn<bool>("isKilled");
        QTest::newRow("67 the emulator is unpacked") << false;
        QTest::newRow("79 the launcher is killed while the emulator is unpacked") << true;
    }

    void whileTheEmulatorIsUnpacked()
    {
        QFETCH(const bool, isKilled);
        const auto unpacking = m_sandbox->scratch() / "unpacking";
        const auto scratch = toText(m_sandbox->scratch());
        const StandInTool tool(m_sandbox->scratch() / "tools",
                               "echo $$ >'" + QByteArray::fromStdString(unpacking.native()) +
                                   "'\nexec '" SCRIPTED_CHILD "'");
        scriptChild({QStringLiteral("touch %1/begun").arg(scratch), QStringLiteral("wait %1/go").arg(scratch),
                     QStringLiteral("touch %1/over").arg(scratch)});
        startLauncher();
        QVERIFY(appears(m_sandbox->scratch() / "begun"));
        QVERIFY(fs::exists(Paths::aresNew()));
        if (isKilled) {
            m_launcher->kill();
            QVERIFY(m_launcher->waitForFinished());
        } else {
            QVERIFY(closes());
        }
        const auto program = fs::path("/proc") / readFile(unpacking).trimmed().toStdString() / "exe";
        // A process that has ended has no program, even before its parent waits for it.
        QVERIFY(QTest::qWaitFor([&] { return !fs::exists(program); }, 30'000));
        QVERIFY(!fs::exists(m_sandbox->scratch() / "over"));
        QVERIFY(playsAgain());
    }
#endif

    void whileTheEmulatorPlays_data()
    {
        addOnlyRow("67 the emulator plays");
    }

    void whileTheEmulatorPlays()
    {
        installAres();
        saveGame();
        const auto scratch = toText(m_sandbox->scratch());
        scriptChild({QStringLiteral("touch %1/playing").arg(scratch),
                     QStringLiteral("wait %1/go").arg(scratch), QStringLiteral("err still here"),
                     QStringLiteral("touch %1/over").arg(scratch)});
        startLauncher();
        QVERIFY(appears(m_sandbox->scratch() / "playing"));
        QVERIFY(closes());
        // The emulator plays on, and can still write its errors.
        QVERIFY(!fs::exists(m_sandbox->scratch() / "over"));
        writeFile(m_sandbox->scratch() / "go", {});
        QVERIFY(appears(m_sandbox->scratch() / "over"));
        QVERIFY(playsAgain());
    }

    void whileAnUpdateIsLookedFor_data()
    {
        addOnlyRow("67 an update is looked for");
    }

    void whileAnUpdateIsLookedFor()
    {
        installAres();
        saveGame();
        m_sites->answers[ScriptedSites::latest].clear();
        startLauncher("check");
        QVERIFY(isAsked(ScriptedSites::latest));
        QVERIFY(closes());
        QVERIFY(playsAgain());
    }

    void whileNothingRuns_data()
    {
        addOnlyRow("67 nothing runs");
    }

    void whileNothingRuns()
    {
        m_sites->answers[ScriptedSites::latest] = httpAnswer(404);
        startLauncher();
        QVERIFY(isAsked(ScriptedSites::latest));
        QTRY_VERIFY(m_sites->isDeserted());
        QVERIFY(closes());
        QCOMPARE(Sandbox::storage(), QStringList());
        QVERIFY(playsAgain());
    }
};

QTEST_GUILESS_MAIN(ClosedWindowTest)
#include "tst_ClosedWindow.moc"
