// SPDX-License-Identifier: MIT
#include "core/PreferenceKeys.h"
#include "platform/Preferences.h"
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/AresBundle.h"
#include "support/FlowTest.h"
#include "support/ModelProbe.h"

#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;
using Stage = AppModel::Stage;

namespace
{

const QStringList cleared{QStringLiteral("errorMessage none"), QStringLiteral("errorDetails"),
                          QStringLiteral("gameDownloadFailed false"), QStringLiteral("notice none")};
const QStringList progressBegun{QStringLiteral("fraction none"), QStringLiteral("detailLine")};

QStringList launched()
{
    return QStringList{QStringLiteral("stage starting")} + progressBegun +
           QStringList{QStringLiteral("stage playing")};
}

QStringList refreshed(const char* setupDone, const char* version)
{
    return {QStringLiteral("setupDone ") + QLatin1String(setupDone),
            QStringLiteral("usingExternalAres false"),
            QStringLiteral("aresVersion ") + QLatin1String(version)};
}

const QStringList bothGot{QLatin1String(ScriptedSites::latest), QLatin1String(ScriptedSites::archive),
                          QLatin1String(ScriptedSites::page), QLatin1String(ScriptedSites::form),
                          QLatin1String(ScriptedSites::game)};

} // namespace

/// From a press to the running game: what is done, asked for and shown, in which order.
class PlayFlowTest : public FlowTest
{
    Q_OBJECT

    fs::path proceed() const { return m_sandbox->scratch() / "proceed"; }
    fs::path arguments() const { return m_sandbox->scratch() / "arguments"; }

    /// The emulator notes its arguments and runs until letGo is called.
    void keepRunning() const
    {
        scriptChild(
            {QStringLiteral("args ") + toText(arguments()), QStringLiteral("wait ") + toText(proceed())});
    }
    void letGo() const { writeFile(proceed(), ""); }

    QString romGiven() const { return QString::fromUtf8(readFile(arguments())).trimmed().section(u'\n', -1); }

    fs::path installForUser() const { return makeAresApp(m_sandbox->home() / "Applications"); }

    /// What the exit of an emulator that ran too short is shown as.
    QStringList stoppedAtOnce() const
    {
        return {QStringLiteral("stage idle"), QStringLiteral("errorMessage ") + *m_model->errorMessage(),
                QStringLiteral("errorDetails")};
    }

private Q_SLOTS:
    void withBothPresentTheGameStartsAtOnceAndNothingIsAskedFor()
    {
        installAres();
        saveGame();
        restart();
        m_model->play();
        QCOMPARE(m_model->stage(), Stage::idle);
        QVERIFY(goesThrough(Stage::playing));
        QCOMPARE(m_recorder->changes(), cleared + launched() + stoppedAtOnce());
        QCOMPARE(m_recorder->stages(), QStringLiteral("idle starting playing idle").split(u' '));
        QCOMPARE(m_sites->asked(), QStringList());
    }

    void withNothingPresentBothAreFetched()
    {
        m_model->play();
        QVERIFY(goesThrough(Stage::playing));
        QCOMPARE(m_recorder->changes(), cleared + QStringList{QStringLiteral("stage gettingAres")} +
                                            progressBegun + refreshed("false", "v147") +
                                            QStringList{QStringLiteral("stage gettingGame")} + progressBegun +
                                            refreshed("true", "v147") + launched() + stoppedAtOnce());
        QCOMPARE(m_recorder->stages(),
                 QStringLiteral("idle gettingAres gettingGame starting playing idle").split(u' '));
        QCOMPARE(m_sites->asked(), bothGot);
        QCOMPARE(Sandbox::storage(), (QStringList{QStringLiteral("Ares"), QStringLiteral("Quillet64.z64"),
                                                  QStringLiteral("ares-version.txt")}));
    }

    void withTheEmulatorPresentOnlyTheGameIsFetched()
    {
        installAres();
        restart();
        m_model->play();
        QVERIFY(goesThrough(Stage::playing));
        QCOMPARE(m_recorder->changes(), cleared + QStringList{QStringLiteral("stage gettingGame")} +
                                            progressBegun + refreshed("true", "v146") + launched() +
                                            stoppedAtOnce());
        QCOMPARE(m_sites->asked(), bothGot.mid(2));
    }

    void bothDownloadsShowTheirProgress()
    {
        QStringList complete;
        connect(m_model.get(), &AppModel::fractionChanged, this, [&] {
            if (m_model->fraction() == 1.0)
                complete.append(m_model->stageTitle());
        });
        m_model->play();
        QVERIFY(goesThrough(Stage::playing));
        complete.removeDuplicates();
        QCOMPARE(complete, (QStringList{QStringLiteral("Getting Ares"), QStringLiteral("Getting the game")}));
    }

    void installedEmulatorIsPlayedWithoutAnOffer()
    {
        installAres();
        saveGame();
        installForUser();
        restart();
        m_model->play();
        QVERIFY(comesToRest());
        QCOMPARE(m_model->offerExternal(), std::nullopt);
        QCOMPARE(m_recorder->stages(), QStringLiteral("idle starting playing idle").split(u' '));
    }

    void anEmulatorFoundElsewhereIsOfferedAndNothingElseChanges()
    {
        const auto found = installForUser();
        m_model->start(fs::path("/own.z64"), true);
        QTRY_VERIFY(m_model->offerExternal().has_value());
        QCOMPARE(m_recorder->changes(),
                 cleared + QStringList{QStringLiteral("offerExternal ") + toText(found)});
        QCOMPARE(ModelProbe::pendingROM(*m_model), fs::path("/own.z64"));
        QCOMPARE(m_recorder->stages(), QStringList{QStringLiteral("idle")});
        QCOMPARE(m_sites->asked(), QStringList());
    }

    void acceptingTheOfferStartsThePendingRom()
    {
        const auto found = installForUser();
        keepRunning();
        m_model->start(fs::path("/own.z64"), true);
        QTRY_VERIFY(m_model->offerExternal().has_value());
        m_model->useExistingAres(*m_model->offerExternal());
        QVERIFY(comesTo(Stage::playing));
        QTRY_VERIFY(fs::exists(arguments()));
        QCOMPARE(romGiven(), QStringLiteral("/own.z64"));
        QCOMPARE(ModelProbe::pendingROM(*m_model), std::nullopt);
        QCOMPARE(m_model->usingExternalAres(), true);
        QCOMPARE(Preferences::text(PreferenceKeys::externalAres), toText(found));
        QCOMPARE(m_sites->asked(), QStringList());
        letGo();
        QVERIFY(comesToRest());
    }

    void acceptingTheOfferWithoutAPendingRomFetchesTheGame()
    {
        const auto found = installForUser();
        m_model->play();
        QTRY_VERIFY(m_model->offerExternal().has_value());
        m_model->useExistingAres(toText(found));
        QVERIFY(goesThrough(Stage::playing));
        QCOMPARE(m_sites->asked(), bothGot.mid(2));
    }

    void turningTheOfferDownFetchesTheEmulatorAndPlaysThePendingRom()
    {
        installForUser();
        keepRunning();
        m_model->start(fs::path("/own.z64"), true);
        QTRY_VERIFY(m_model->offerExternal().has_value());
        m_model->downloadAresInstead();
        QCOMPARE(ModelProbe::pendingROM(*m_model), std::nullopt);
        QVERIFY(comesTo(Stage::playing));
        QTRY_VERIFY(fs::exists(arguments()));
        QCOMPARE(romGiven(), QStringLiteral("/own.z64"));
        QCOMPARE(m_model->aresVersion(), QStringLiteral("v147"));
        QCOMPARE(m_sites->asked(), bothGot.mid(0, 2));
        letGo();
        QVERIFY(comesToRest());
    }

    void dismissingTheOfferForgetsThePendingRomAndStartsNothing()
    {
        installForUser();
        m_model->start(fs::path("/own.z64"), true);
        QTRY_VERIFY(m_model->offerExternal().has_value());
        m_model->dismissOffer();
        QCOMPARE(ModelProbe::pendingROM(*m_model), std::nullopt);
        QCoreApplication::processEvents();
        QCOMPARE(m_model->stage(), Stage::idle);
        QCOMPARE(m_sites->asked(), QStringList());
    }

    void aStaleChoiceOfAnEmulatorCountsAsNone()
    {
        Preferences::setText(PreferenceKeys::externalAres, toText(m_sandbox->scratch() / "gone/ares.app"));
        m_model->play();
        QVERIFY(goesThrough(Stage::playing));
        QCOMPARE(m_sites->asked(), bothGot);
    }

    void aPressWhileSomethingRunsDoesNothing_data()
    {
        QTest::addColumn<Stage>("stage");
        QTest::newRow("gettingAres") << Stage::gettingAres;
        QTest::newRow("gettingGame") << Stage::gettingGame;
        QTest::newRow("starting") << Stage::starting;
        QTest::newRow("playing") << Stage::playing;
    }

    void aPressWhileSomethingRunsDoesNothing()
    {
        QFETCH(const Stage, stage);
        m_model->stage = stage;
        m_model->notice = QStringLiteral("of before");
        m_recorder->clear();
        m_model->play();
        QCoreApplication::processEvents();
        QCOMPARE(m_recorder->changes(), QStringList());
        QCOMPARE(m_model->notice(), QStringLiteral("of before"));
        QCOMPARE(m_sites->asked(), QStringList());
    }

    void aSecondPressInTheSameInstantStartsNothing()
    {
        installAres();
        saveGame();
        restart();
        keepRunning();
        m_model->play();
        m_model->play();
        QVERIFY(comesTo(Stage::playing));
        QTRY_VERIFY(fs::exists(arguments()));
        letGo();
        QVERIFY(comesToRest());
        QCOMPARE(m_recorder->changes(), cleared + launched() + stoppedAtOnce());
    }

    void aRomOfThePlayersOwnIsPlayedAsItIs()
    {
        installAres();
        restart();
        const auto own = m_sandbox->scratch() / "own game.v64";
        writeFile(own, "not even a ROM");
        keepRunning();
        m_model->start(own, true);
        QVERIFY(comesTo(Stage::playing));
        QTRY_VERIFY(fs::exists(arguments()));
        QCOMPARE(romGiven(), toText(own));
        QCOMPARE(m_sites->asked(), QStringList());
        letGo();
        QVERIFY(comesToRest());
    }

    void fullScreenIsPassedOn()
    {
        installAres();
        saveGame();
        restart();
        m_model->setFullscreen(true);
        keepRunning();
        m_model->play();
        QTRY_VERIFY(fs::exists(arguments()));
        QCOMPARE(QString::fromUtf8(readFile(arguments())),
                 QStringLiteral("--system\nNintendo 64\n--fullscreen\n%1\n").arg(toText(Paths::gameFile())));
        letGo();
        QVERIFY(comesToRest());
    }

    void theEmulatorGoesOnWhenTheModelHasGone()
    {
        installAres();
        saveGame();
        restart();
        const auto ended = m_sandbox->scratch() / "ended";
        scriptChild({QStringLiteral("wait ") + toText(proceed()), QStringLiteral("touch ") + toText(ended)});
        m_model->play();
        QVERIFY(comesTo(Stage::playing));
        m_recorder.reset();
        m_model.reset();
        letGo();
        QTRY_VERIFY(fs::exists(ended));
        QCoreApplication::processEvents();
    }
};

QTEST_GUILESS_MAIN(PlayFlowTest)
#include "tst_PlayFlow.moc"
