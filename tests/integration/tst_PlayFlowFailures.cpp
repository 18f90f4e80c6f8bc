// SPDX-License-Identifier: MIT
#include "errors/AppError.h"
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/AresBundle.h"
#include "support/FlowTest.h"
#include "support/ModelProbe.h"
#include "support/Unprivileged.h"

#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;
using Stage = AppModel::Stage;

/// How the flow ends when a step fails or is cancelled, and that the next press works.
class PlayFlowFailuresTest : public FlowTest
{
    Q_OBJECT

    QString message() const { return m_model->errorMessage().value_or(QStringLiteral("none")); }
    QStringList detailLines() const { return m_model->errorDetails().split(u'\n'); }

    void press()
    {
        m_model->play();
        QVERIFY(comesToRest());
    }

    void theNextPressPlays()
    {
        m_model->play();
        QVERIFY(goesThrough(Stage::playing));
    }

    void cancelIn(Stage stage)
    {
        m_model->play();
        QVERIFY(comesTo(stage));
        m_model->cancel();
        QVERIFY(comesToRest());
        QCOMPARE(m_model->notice(), QStringLiteral("Cancelled. Nothing was changed."));
        QCOMPARE(m_model->errorMessage(), std::nullopt);
        QCOMPARE(m_model->gameDownloadFailed(), false);
        QCOMPARE(m_model->fraction(), std::nullopt);
        QCOMPARE(m_model->detailLine(), QString());
    }

    /// The changes from the return to rest on.
    QStringList endOfTheFlow() const
    {
        return m_recorder->changes().mid(m_recorder->changes().indexOf(QStringLiteral("stage idle")));
    }

    static QStringList atRestAnd(const QStringList& told)
    {
        return QStringList{QStringLiteral("stage idle"), QStringLiteral("fraction none"),
                           QStringLiteral("detailLine")} +
               told +
               QStringList{QStringLiteral("setupDone false"), QStringLiteral("usingExternalAres false"),
                           QStringLiteral("aresVersion none")};
    }

private Q_SLOTS:
    void failureIsToldAfterTheReturnToRest()
    {
        m_sites->answers[ScriptedSites::latest] = httpAnswer(403);
        press();
        QCOMPARE(endOfTheFlow(),
                 atRestAnd({QStringLiteral("errorMessage ") + message(), QStringLiteral("errorDetails")}));
    }

    void cancellationIsToldAfterTheReturnToRest()
    {
        m_sites->answers[ScriptedSites::latest].clear();
        cancelIn(Stage::gettingAres);
        QCOMPARE(endOfTheFlow(), atRestAnd({QStringLiteral("notice Cancelled. Nothing was changed.")}));
    }

    void aRefusedReleaseLookupIsShownAsItIsWorded()
    {
        const auto good = std::exchange(m_sites->answers[ScriptedSites::latest], httpAnswer(403));
        press();
        QCOMPARE(message(),
                 QStringLiteral("GitHub answered with error 403 when asking for the latest Ares."));
        QCOMPARE(m_model->errorDetails(), QString());
        QCOMPARE(m_model->gameDownloadFailed(), false);
        QCOMPARE(Sandbox::storage(), QStringList());
        m_sites->answers[ScriptedSites::latest] = good;
        theNextPressPlays();
    }

    void aTransportFailureOfTheLookupNamesTheStepInTheDetails()
    {
        m_sites->answers[ScriptedSites::latest] = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nshort";
        press();
        QCOMPARE(message(), QStringLiteral("No internet connection. Check your network and try again."));
        QCOMPARE(detailLines().mid(0, 2),
                 (QStringList{QStringLiteral("Getting Ares"), QStringLiteral("NSURLErrorDomain -1005")}));
    }

    void aFailedInstallationLeavesNothingBehind()
    {
        const auto good =
            std::exchange(m_sites->answers[ScriptedSites::archive], httpAnswer(200, "no archive"));
        press();
        QVERIFY2(
            message().startsWith(QStringLiteral("The Ares download is damaged (got 10 bytes, expected ")),
            qPrintable(message()));
        QCOMPARE(Sandbox::storage(), QStringList());
        m_sites->answers[ScriptedSites::archive] = good;
        theNextPressPlays();
    }

    void anInstallationThatCannotBeStoredNamesTheStep()
    {
        writeFile(Paths::support(), "in the way");
        press();
        QVERIFY2(message().startsWith(QStringLiteral("Getting Ares failed: ")), qPrintable(message()));
        QVERIFY(detailLines().at(1).startsWith(QStringLiteral("NSPOSIXErrorDomain ")));
    }

    void aFailedGameDownloadOffersTheOtherWays()
    {
        installAres();
        const auto good = std::exchange(m_sites->answers[ScriptedSites::page], httpAnswer(503));
        press();
        QCOMPARE(message(), QStringLiteral("The Gamestall page answered with error 503."));
        QCOMPARE(m_model->gameDownloadFailed(), true);
        QCOMPARE(m_recorder->changes().indexOf(QStringLiteral("gameDownloadFailed true")) <
                     m_recorder->changes().indexOf(QStringLiteral("stage idle")),
                 true);
        m_sites->answers[ScriptedSites::page] = good;
        theNextPressPlays();
        QCOMPARE(m_model->gameDownloadFailed(), false);
    }

    void aTransportFailureOfTheGameNamesTheStepInTheDetails()
    {
        installAres();
        m_sites->answers[ScriptedSites::game] = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nshort";
        press();
        QCOMPARE(detailLines().first(), QStringLiteral("Getting the game"));
        QCOMPARE(m_model->gameDownloadFailed(), true);
    }

    void aDamagedSavedGameIsDeletedAndTheNextPressFetchesIt()
    {
        installAres();
        writeSparse(Paths::gameFile(), "\x37\x80\x40\x12", 10'000'000);
        restart();
        press();
        QCOMPARE(message(), QStringLiteral("The saved game file was damaged, so it was deleted. Press the "
                                           "button to download it again."));
        QCOMPARE(m_model->errorDetails(),
                 QStringLiteral("The file does not look like a .z64 Nintendo 64 game (wrong header)."));
        QCOMPARE(m_model->gameDownloadFailed(), true);
        QCOMPARE(m_model->setupDone(), false);
        QVERIFY(!fs::exists(Paths::gameFile()));
        QCOMPARE(m_sites->asked(), QStringList());
        theNextPressPlays();
        QVERIFY(fs::exists(Paths::gameFile()));
    }

    void aDamagedGameThatCannotBeDeletedIsReportedAllTheSame()
    {
        installAres();
        writeFile(Paths::gameFile(), "damaged");
        restart();
        m_sandbox->giveToEveryone();
        fs::permissions(Paths::support(), fs::perms(0555));
        {
            const Unprivileged unprivileged;
            press();
        }
        fs::permissions(Paths::support(), fs::perms(0755));
        QVERIFY(fs::exists(Paths::gameFile()));
        QCOMPARE(message(), QStringLiteral("The saved game file was damaged, so it was deleted. Press the "
                                           "button to download it again."));
        QCOMPARE(m_model->errorDetails(),
                 QStringLiteral("That file is not the right size for a Nintendo 64 game (0 KB)."));
        QCOMPARE(m_model->gameDownloadFailed(), true);
    }

    void cancellingTheLookupIsANotice()
    {
        m_sites->answers[ScriptedSites::latest].clear();
        cancelIn(Stage::gettingAres);
        QCOMPARE(Sandbox::storage(), QStringList());
    }

    void cancellingTheDownloadOfTheEmulatorLeavesNothing()
    {
        m_sites->answers[ScriptedSites::archive].clear();
        m_model->play();
        QTRY_COMPARE(m_sites->asked().size(), 2);
        m_model->cancel();
        QVERIFY(comesToRest());
        QCOMPARE(m_model->notice(), QStringLiteral("Cancelled. Nothing was changed."));
        QCOMPARE(Sandbox::storage(), QStringList());
    }

    void cancellingInTheMiddleOfAFileLeavesNoneOfIt_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<Stage>("stage");
        QTest::newRow("archive") << QByteArray(ScriptedSites::archive) << Stage::gettingAres;
        QTest::newRow("game") << QByteArray(ScriptedSites::game) << Stage::gettingGame;
    }

    void cancellingInTheMiddleOfAFileLeavesNoneOfIt()
    {
        QFETCH(const QByteArray, file);
        QFETCH(const Stage, stage);
        m_sites->answers[file].chop(1);
        m_sites->heldOpen.insert(file);
        m_model->play();
        QTRY_VERIFY(m_model->stage() == stage && m_model->fraction().value_or(0) > 0);
        const auto partial = Sandbox::storage().filter(QStringLiteral("download-"));
        QCOMPARE(partial.size(), 1);
        m_model->cancel();
        QVERIFY(comesToRest());
        QCOMPARE(m_model->notice(), QStringLiteral("Cancelled. Nothing was changed."));
        QCOMPARE(m_model->gameDownloadFailed(), false);
        QCOMPARE(Sandbox::storage().filter(QStringLiteral("download-")), QStringList());
        QVERIFY(!fs::exists(Paths::gameFile()));
        QCOMPARE(fs::exists(Paths::ares()), stage == Stage::gettingGame);
        m_sites->mend();
        m_sites->heldOpen.clear();
        theNextPressPlays();
    }

    void cancellingTheGameDownloadDoesNotCountAsAFailedOne()
    {
        installAres();
        const auto good = std::exchange(m_sites->answers[ScriptedSites::page], QByteArray());
        cancelIn(Stage::gettingGame);
        m_sites->answers[ScriptedSites::page] = good;
        theNextPressPlays();
    }

    void aBundleWithoutAProgramGetsNoHint()
    {
        saveGame();
        fs::create_directories(Paths::ares() / "ares.app");
        press();
        QCOMPARE(message(), QStringLiteral("Could not find the program inside ares.app."));
        QCOMPARE(m_model->errorDetails(), toText(Paths::ares() / "ares.app"));
        QCOMPARE(m_recorder->stages(), QStringLiteral("idle starting idle").split(u' '));
    }

    void aMissingEmulatorOrRomCannotBeStarted()
    {
        QVERIFY_THROWS_EXCEPTION(AppError,
                                 ModelProbe::launchAres(*m_model, std::nullopt, fs::path("/game.z64")));
        try {
            ModelProbe::launchAres(*m_model, fs::path("/ares.app"), std::nullopt);
            QFAIL("a start without a ROM went through");
        } catch (const AppError& error) {
            ModelProbe::failFlow(*m_model, error, Step::startingAres);
        }
        QCOMPARE(message(), QStringLiteral("Ares or the game could not be found."));
        QCOMPARE(m_model->errorDetails(), QString());
        QCOMPARE(m_model->stage(), Stage::idle);
    }

    void theModelMayGoInTheMiddleOfADownload_data()
    {
        QTest::addColumn<QByteArray>("silent");
        QTest::addColumn<int>("asked");
        QTest::newRow("lookup") << QByteArray(ScriptedSites::latest) << 1;
        QTest::newRow("archive") << QByteArray(ScriptedSites::archive) << 2;
        QTest::newRow("page") << QByteArray(ScriptedSites::page) << 3;
        QTest::newRow("game") << QByteArray(ScriptedSites::game) << 5;
    }

    void theModelMayGoInTheMiddleOfADownload()
    {
        QFETCH(const QByteArray, silent);
        QFETCH(const int, asked);
        m_sites->answers[silent].clear();
        m_model->play();
        QTRY_COMPARE(m_sites->asked().size(), asked);
        const auto task = ModelProbe::task(*m_model);
        m_recorder.reset();
        m_model.reset();
        task->cancel();
        // The flow goes on to its end without its model: it hangs up and clears its work folder away.
        QTRY_VERIFY(m_sites->isDeserted());
        QTRY_VERIFY(Sandbox::storage().filter(QStringLiteral("download-")).isEmpty());
    }
};

QTEST_GUILESS_MAIN(PlayFlowFailuresTest)
#include "tst_PlayFlowFailures.moc"
