// SPDX-License-Identifier: MIT
#include "core/AppModel.h"
#include "core/PreferenceKeys.h"
#include "platform/Preferences.h"
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/AresBundle.h"
#include "support/EventLoopWait.h"
#include "support/ModelRecorder.h"
#include "support/Sandbox.h"

#include <QtTest>

#include <memory>

namespace fs = std::filesystem;
using namespace cartloom;
using Stage = AppModel::Stage;

class AppModelTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<Sandbox> m_sandbox;

    void chooseExternal(const fs::path& app)
    {
        Preferences::setText(PreferenceKeys::externalAres, toText(app));
    }

    static void installAres(const QByteArray& tag)
    {
        makeAresApp(Paths::ares());
        writeFile(Paths::aresVersion(), tag);
    }

private Q_SLOTS:
    void init() { m_sandbox = std::make_unique<Sandbox>(); }
    void cleanup() { m_sandbox.reset(); }

    void aFirstStartIsEmpty()
    {
        const auto model = AppModel::create();
        QCOMPARE(model->stage(), Stage::idle);
        QCOMPARE(model->fraction(), std::nullopt);
        QCOMPARE(model->detailLine(), QString());
        QCOMPARE(model->errorMessage(), std::nullopt);
        QCOMPARE(model->errorDetails(), QString());
        QCOMPARE(model->gameDownloadFailed(), false);
        QCOMPARE(model->notice(), std::nullopt);
        QCOMPARE(model->offerExternal(), std::nullopt);
        QVERIFY(!model->updateOffer());
        QCOMPARE(model->confirmReset(), false);
        QCOMPARE(model->setupDone(), false);
        QCOMPARE(model->aresVersion(), std::nullopt);
        QCOMPARE(model->usingExternalAres(), false);
        QCOMPARE(model->fullscreen(), false);
        QCOMPARE(Sandbox::storage(), QStringList());
    }

    void fullScreenIsKeptOverARestart()
    {
        AppModel::create()->setFullscreen(true);
        const auto second = AppModel::create();
        QCOMPARE(second->fullscreen(), true);
        second->setFullscreen(false);
        QCOMPARE(AppModel::create()->fullscreen(), false);
    }

    void fullScreenIsShownBeforeItIsStored()
    {
        const auto model = AppModel::create();
        bool stored = true;
        connect(model.get(), &AppModel::fullscreenChanged, this,
                [&] { stored = Preferences::boolean(PreferenceKeys::fullscreen); });
        model->setFullscreen(true);
        QCOMPARE(stored, false);
        QCOMPARE(Preferences::boolean(PreferenceKeys::fullscreen), true);
    }

    void setupIsDoneWithAnEmulatorAndAGameEvenIfItIsDamaged()
    {
        installAres("v147");
        QCOMPARE(AppModel::create()->setupDone(), false);
        writeFile(Paths::gameFile(), "damaged");
        QCOMPARE(AppModel::create()->setupDone(), true);
        fs::remove_all(Paths::ares());
        QCOMPARE(AppModel::create()->setupDone(), false);
    }

    void theChosenEmulatorWinsOverTheInstalledOne()
    {
        installAres("v147");
        const auto own = makeAresApp(m_sandbox->scratch());
        chooseExternal(own);
        const auto model = AppModel::create();
        QCOMPARE(model->locateAres(), own);
        QCOMPARE(model->usingExternalAres(), true);
        QCOMPARE(model->aresVersion(), std::nullopt);
    }

    void aChosenEmulatorThatIsGoneLeavesTheInstalledOne()
    {
        installAres("v147");
        chooseExternal(m_sandbox->scratch() / "gone/ares.app");
        const auto model = AppModel::create();
        QCOMPARE(model->usingExternalAres(), false);
        QCOMPARE(model->aresVersion(), QStringLiteral("v147"));
        QCOMPARE(model->locateAres(), Paths::ares() / "ares.app");
        QVERIFY(Preferences::text(PreferenceKeys::externalAres).has_value());
    }

    void aChoiceThatIsNoLocalPathReadsAsAbsent_data()
    {
        QTest::addColumn<QString>("choice");
        QTest::newRow("70 relative") << QStringLiteral(".");
        QTest::newRow("70 below the home folder") << QStringLiteral("~");
        QTest::newRow("70 an address") << QStringLiteral("file:///");
        QTest::newRow("70 on another machine") << QStringLiteral("smb://server/ares.app");
        QTest::newRow("70 a null character") << QStringLiteral("/") + QChar(QChar::Null) + u'x';
    }

    void aChoiceThatIsNoLocalPathReadsAsAbsent()
    {
        QFETCH(const QString, choice);
        Preferences::setText(PreferenceKeys::externalAres, choice);
        QCOMPARE(Preferences::text(PreferenceKeys::externalAres), choice);
        const auto model = AppModel::create();
        QCOMPARE(model->externalPreference(), std::nullopt);
        QCOMPARE(model->usingExternalAres(), false);
    }

    void anEmulatorElsewhereOnTheMachineIsNeverLocated()
    {
        makeAresApp(m_sandbox->home() / "Applications");
        QCOMPARE(AppModel::create()->locateAres(), std::nullopt);
    }

    void clearingTheMessagesLeavesTheOffersAndTheProgress()
    {
        const auto model = AppModel::create();
        model->errorMessage = QStringLiteral("message");
        model->errorDetails = QStringLiteral("details");
        model->gameDownloadFailed = true;
        model->notice = QStringLiteral("notice");
        model->offerExternal = "/opt/ares.app";
        model->updateOffer = AresRelease{QStringLiteral("v148"), {}, {}, 0};
        model->stage = Stage::gettingGame;
        model->fraction = 0.5;
        model->detailLine = QStringLiteral("line");

        const ModelRecorder recorder(*model);
        model->clearMessages();

        QCOMPARE(recorder.changes(),
                 (QStringList{QStringLiteral("errorMessage none"), QStringLiteral("errorDetails"),
                              QStringLiteral("gameDownloadFailed false"), QStringLiteral("notice none")}));
        QCOMPARE(model->offerExternal(), fs::path("/opt/ares.app"));
        QCOMPARE(model->updateOffer()->tagName, QStringLiteral("v148"));
        QCOMPARE(model->stage(), Stage::gettingGame);
        QCOMPARE(model->fraction(), 0.5);
        QCOMPARE(model->detailLine(), QStringLiteral("line"));
    }

    void everyWriteIsAnnouncedBeforeItIsMade()
    {
        const auto model = AppModel::create();
        QList<Stage> before;
        connect(model.get(), &AppModel::objectWillChange, this, [&] { before.append(model->stage()); });
        model->stage = Stage::gettingAres;
        model->stage = Stage::gettingAres;
        model->stage = Stage::idle;
        QCOMPARE(before, (QList{Stage::idle, Stage::gettingAres, Stage::gettingAres}));
    }

    void whatIsAbsentIsUndefinedToTheWindow()
    {
        const auto model = AppModel::create();
        for (const char* const field :
             {"fraction", "errorMessage", "notice", "offerExternal", "updateOffer", "aresVersion"})
            QVERIFY2(!model->property(field).isValid(), field);
        model->offerExternal = "/opt/ares.app";
        QCOMPARE(model->property("offerExternal").toString(), QStringLiteral("/opt/ares.app"));
    }

    void runningFlowKeepsTheModelAlive()
    {
        auto model = AppModel::create();
        const std::weak_ptr observer(model);
        model->play();
        model = nullptr;
        QVERIFY(!observer.expired());
        // Nobody answers at the origins of the tests, so that the flow fails.
        QVERIFY(comesTrue([&] { return observer.expired(); }));
    }

    void reportsAfterTheModelAreDropped()
    {
        auto model = AppModel::create();
        const auto callback = model->progressCallback();
        const std::weak_ptr observer(model);
        callback(1, 2);
        model = nullptr;
        QVERIFY(observer.expired());
        callback(2, 2);
        QCoreApplication::processEvents();
    }

    void absentFieldEqualsAnEmptyOptional()
    {
        const auto model = AppModel::create();
        QVERIFY(model->notice() == std::optional<QString>());
        QVERIFY(model->notice() == model->errorMessage());
        model->notice = QStringLiteral("notice");
        QVERIFY(model->notice() == std::optional(QStringLiteral("notice")));
        QVERIFY(model->notice() != std::optional<QString>());
    }

    void stagesDecideWhatTheWindowShows_data()
    {
        QTest::addColumn<Stage>("stage");
        QTest::addColumn<QString>("title");
        QTest::addColumn<bool>("atRest");
        QTest::addColumn<bool>("showsProgress");
        QTest::addColumn<bool>("canCancel");
        QTest::newRow("idle") << Stage::idle << QString() << true << false << false;
        QTest::newRow("gettingAres") << Stage::gettingAres << QStringLiteral("Getting Ares") << false << true
                                     << true;
        QTest::newRow("gettingGame") << Stage::gettingGame << QStringLiteral("Getting the game") << false
                                     << true << true;
        QTest::newRow("starting") << Stage::starting << QStringLiteral("Starting") << false << true << false;
        QTest::newRow("playing") << Stage::playing << QStringLiteral("Playing...") << false << false << false;
    }

    void stagesDecideWhatTheWindowShows()
    {
        QFETCH(const Stage, stage);
        const auto model = AppModel::create();
        model->stage = stage;
        QTEST(model->stageTitle(), "title");
        QTEST(model->atRest(), "atRest");
        QTEST(model->showsProgress(), "showsProgress");
        QTEST(model->canCancel(), "canCancel");
    }
};

QTEST_GUILESS_MAIN(AppModelTest)
#include "tst_AppModel.moc"
