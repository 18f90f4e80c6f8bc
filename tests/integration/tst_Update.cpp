// SPDX-License-Identifier: MIT
#include "core/PreferenceKeys.h"
#include "platform/Preferences.h"
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/AresBundle.h"
#include "support/FlowTest.h"
#include "support/ModelProbe.h"
#include "support/RawServer.h"
#include "support/TestOrigins.h"

#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;
using Stage = AppModel::Stage;

/// A release service that takes a question and keeps its answer back.
struct HesitantService
{
    HesitantService() { TestOrigins::setReleaseApi(server.url(QString())); }

    RawConnection* asking = nullptr;
    RawServer server{[this](RawConnection& connection, const RawRequest&) { asking = &connection; }};
};

class UpdateTest : public FlowTest
{
    Q_OBJECT

    static QByteArray installedTag() { return readFile(Paths::ares() / "ares.app/tag"); }

    /// What the service offers now, after the check has ended.
    AresRelease offer()
    {
        m_model->checkForUpdate();
        if (!QTest::qWaitFor([this] { return m_model->updateOffer().has_value(); }))
            qFatal("nothing was offered: %s", qPrintable(m_model->errorMessage().value_or(QString())));
        return *m_model->updateOffer();
    }

private Q_SLOTS:
    void theNewestVersionIsANoticeAndNoOffer()
    {
        installAres("v147");
        m_model->checkForUpdate();
        QTRY_COMPARE(m_model->notice(), QStringLiteral("Ares v147 is the newest version."));
        QVERIFY(!m_model->updateOffer());
        QCOMPARE(m_recorder->stages(), QStringList{QStringLiteral("idle")});
    }

    void withoutARecordedVersionAnyReleaseIsOffered()
    {
        makeAresApp(Paths::ares());
        QCOMPARE(offer().tagName, QStringLiteral("v147"));
        QCOMPARE(m_model->notice(), std::nullopt);
    }

    void anyDifferenceIsOffered_data()
    {
        QTest::addColumn<QByteArray>("recorded");
        QTest::newRow("older") << QByteArray("v146");
        QTest::newRow("newer than the server's") << QByteArray("v148");
        QTest::newRow("other letter case") << QByteArray("V147");
    }

    void anyDifferenceIsOffered()
    {
        QFETCH(const QByteArray, recorded);
        installAres(recorded);
        QCOMPARE(offer().tagName, QStringLiteral("v147"));
    }

    void withAnEmulatorOfTheirOwnNothingIsAskedFor()
    {
        Preferences::setText(PreferenceKeys::externalAres, toText(makeAresApp(m_sandbox->scratch() / "own")));
        restart();
        m_model->errorMessage = QStringLiteral("of before");
        m_recorder->clear();
        m_model->checkForUpdate();
        QCoreApplication::processEvents();
        QCOMPARE(m_recorder->changes(),
                 QStringList{
                     QStringLiteral("notice You are using your own copy of Ares, so update it yourself.")});
        QCOMPARE(m_sites->asked(), QStringList());
    }

    void aCheckRemovesTheMessagesOfBefore()
    {
        m_model->errorMessage = QStringLiteral("of before");
        m_model->errorDetails = QStringLiteral("of before");
        m_model->notice = QStringLiteral("of before");
        static_cast<void>(offer());
        QCOMPARE(m_model->errorMessage(), std::nullopt);
        QCOMPARE(m_model->errorDetails(), QString());
        QCOMPARE(m_model->notice(), std::nullopt);
    }

    void aCheckCannotBeCancelledAndShowsNoProgress()
    {
        RawConnection* asking = nullptr;
        m_sites->scripts[ScriptedSites::latest] = [&](RawConnection& connection, const RawRequest&) {
            asking = &connection;
        };
        m_model->checkForUpdate();
        QTRY_VERIFY(asking);
        QVERIFY(!ModelProbe::task(*m_model));
        m_model->cancel();
        asking->send(m_sites->answers[ScriptedSites::latest]);
        QTRY_VERIFY(m_model->updateOffer().has_value());
        QCOMPARE(m_model->notice(), std::nullopt);
        QCOMPARE(m_recorder->stages(), QStringList{QStringLiteral("idle")});
        QCOMPARE(m_model->fraction(), std::nullopt);
    }

    void aFailedCheckIsWordedWithItsStep()
    {
        m_sites->answers[ScriptedSites::latest] = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nshort";
        m_model->checkForUpdate();
        QTRY_VERIFY(m_model->errorMessage().has_value());
        QCOMPARE(m_model->errorDetails().section(u'\n', 0, 0), QStringLiteral("Checking for a newer Ares"));
        QCOMPARE(m_recorder->stages(), QStringList{QStringLiteral("idle")});
    }

    void neitherDoesAnythingWhileSomethingRuns_data()
    {
        QTest::addColumn<Stage>("stage");
        QTest::newRow("gettingAres") << Stage::gettingAres;
        QTest::newRow("gettingGame") << Stage::gettingGame;
        QTest::newRow("starting") << Stage::starting;
        QTest::newRow("playing") << Stage::playing;
    }

    void neitherDoesAnythingWhileSomethingRuns()
    {
        QFETCH(const Stage, stage);
        m_model->stage = stage;
        m_recorder->clear();
        m_model->checkForUpdate();
        m_model->installUpdate(AresRelease{QStringLiteral("v148"), {}, {}, 0});
        QCoreApplication::processEvents();
        QCOMPARE(m_recorder->changes(), QStringList());
        QCOMPARE(m_sites->asked(), QStringList());
    }

    void neitherDoesAnythingInTheInstantOfAPress()
    {
        installAres();
        saveGame();
        restart();
        m_model->play();
        m_model->checkForUpdate();
        m_model->installUpdate(AresRelease{QStringLiteral("v148"), {}, {}, 0});
        QVERIFY(goesThrough(Stage::playing));
        QCOMPARE(m_sites->asked(), QStringList());
        QVERIFY(!m_recorder->stages().contains(QStringLiteral("gettingAres")));
    }

    void anUpdateShowsHowFarItIs()
    {
        installAres("v146");
        restart();
        const auto release = offer();
        const QByteArray archive = m_sites->answers[ScriptedSites::archive];
        qsizetype sent = archive.size() / 2;
        RawConnection* serving = nullptr;
        m_sites->scripts[ScriptedSites::archive] = [&](RawConnection& connection, const RawRequest&) {
            connection.send(archive.first(sent));
            serving = &connection;
        };
        m_model->installUpdate(release);
        QTRY_VERIFY(serving);
        // What has come is told at intervals, and only when more comes.
        const auto isTold = [&] {
            serving->send(archive.sliced(sent++, 1));
            return m_model->fraction().value_or(0) > 0;
        };
        QTRY_VERIFY(isTold());
        QVERIFY(*m_model->fraction() < 1);
        QVERIFY2(m_model->detailLine().contains(QStringLiteral(" of ")), qPrintable(m_model->detailLine()));
        m_model->cancel();
        QVERIFY(comesToRest());
        QCOMPARE(m_model->fraction(), std::nullopt);
        QCOMPARE(m_model->detailLine(), QString());
    }

    void anUpdateKeepsTheOldCopyAndSaysSo()
    {
        installAres("v146");
        restart();
        const auto release = offer();
        m_recorder->clear();
        m_model->installUpdate(release);
        QCOMPARE(m_model->stage(), Stage::idle);
        QVERIFY(goesThrough(Stage::gettingAres));
        const auto notice = QStringLiteral(
            "Ares v147 is installed. The old copy is kept until the new one has started once.");
        QCOMPARE(
            m_recorder->changes(),
            (QStringList{QStringLiteral("errorMessage none"), QStringLiteral("errorDetails"),
                         QStringLiteral("gameDownloadFailed false"), QStringLiteral("notice none"),
                         QStringLiteral("stage gettingAres"), QStringLiteral("fraction none"),
                         QStringLiteral("detailLine"), QStringLiteral("notice ") + notice,
                         QStringLiteral("stage idle"), QStringLiteral("fraction none"),
                         QStringLiteral("detailLine"), QStringLiteral("setupDone false"),
                         QStringLiteral("usingExternalAres false"), QStringLiteral("aresVersion v147")}));
        QCOMPARE(installedTag(), QByteArray("v147"));
        QCOMPARE(readFile(Paths::aresOld() / "ares.app/tag"), QByteArray("v146"));
    }

    void aCancelledUpdateChangesNothing()
    {
        installAres("v146");
        restart();
        const auto release = offer();
        m_sites->answers[ScriptedSites::archive].clear();
        m_model->installUpdate(release);
        QTRY_COMPARE(m_sites->asked().size(), 2);
        m_model->cancel();
        QVERIFY(comesToRest());
        QCOMPARE(m_model->notice(), QStringLiteral("Cancelled. Your current Ares was not changed."));
        QCOMPARE(m_model->errorMessage(), std::nullopt);
        QCOMPARE(m_model->fraction(), std::nullopt);
        QCOMPARE(m_model->detailLine(), QString());
        QCOMPARE(installedTag(), QByteArray("v146"));
        QCOMPARE(Sandbox::storage(),
                 (QStringList{QStringLiteral("Ares"), QStringLiteral("ares-version.txt")}));
    }

    void aFailedUpdateIsWordedWithItsStepAndLeavesTheInstalledCopy()
    {
        installAres("v146");
        restart();
        const auto release = offer();
        m_sites->answers[ScriptedSites::archive] = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nshort";
        m_model->installUpdate(release);
        QTRY_VERIFY(m_model->errorMessage().has_value());
        QVERIFY(comesToRest());
        QCOMPARE(m_model->errorDetails().section(u'\n', 0, 0), QStringLiteral("Updating Ares"));
        QCOMPARE(installedTag(), QByteArray("v146"));
        QCOMPARE(m_model->aresVersion(), QStringLiteral("v146"));
    }

    void anUpdateThatDoesNotStartIsRolledBack()
    {
        installAres("v146");
        saveGame();
        restart();
        m_model->installUpdate(offer());
        QVERIFY(goesThrough(Stage::gettingAres));
        scriptChild({QStringLiteral("err broken"), QStringLiteral("exit 1")});
        m_model->play();
        QVERIFY(goesThrough(Stage::playing));
        QVERIFY(m_model->errorMessage()->endsWith(
            QStringLiteral("\n\nThe new Ares did not work, so the previous version was put back.")));
        QCOMPARE(installedTag(), QByteArray("v146"));
        QVERIFY(!fs::exists(Paths::aresOld()));
    }

    void theModelMayGoInTheMiddleOfACheck()
    {
        HesitantService service;
        m_model->checkForUpdate();
        QTRY_VERIFY(service.asking);
        QVERIFY(m_model->hasWorkUnderWay());
        m_recorder.reset();
        m_model.reset();
        service.asking->send(httpAnswer(200, "{}"));
        // The check lets go of its connection when it has come to its end without its model.
        QTRY_VERIFY(service.asking->isClosed());
    }

    void pressesDuringACheckJoinIt()
    {
        HesitantService service;
        for (int press = 0; press < 3; ++press)
            m_model->checkForUpdate();
        QTRY_VERIFY(service.asking);
        service.asking->send(httpAnswer(200, "{}"));
        QTRY_VERIFY(!m_model->hasWorkUnderWay());
        QCOMPARE(service.server.requests().size(), std::size_t(1));
        m_model->checkForUpdate();
        QTRY_COMPARE(service.server.requests().size(), std::size_t(2));
    }

    void aCheckCountsAsWorkUntilItHasEnded()
    {
        HesitantService service;
        m_model->checkForUpdate();
        QTRY_VERIFY(service.asking);
        QVERIFY(m_model->hasWorkUnderWay());
        service.asking->send(httpAnswer(200, "{}"));
        QTRY_VERIFY(m_model->errorMessage().has_value());
        QTRY_VERIFY(!m_model->hasWorkUnderWay());
    }
};

QTEST_GUILESS_MAIN(UpdateTest)
#include "tst_Update.moc"
