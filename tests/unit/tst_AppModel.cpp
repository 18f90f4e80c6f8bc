// SPDX-License-Identifier: MIT
#include "core/AppModel.h"
#include "core/Paths.h"
#include "core/PreferenceKeys.h"
#include "platform/Preferences.h"
#include "platform/Text.h"
#include "support/AresBundle.h"
#include "support/ModelProbe.h"
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
        const AppModel model;
        QCOMPARE(model.stage(), Stage::idle);
        QCOMPARE(model.fraction(), std::nullopt);
        QCOMPARE(model.detailLine(), QString());
        QCOMPARE(model.errorMessage(), std::nullopt);
        QCOMPARE(model.errorDetails(), QString());
        QCOMPARE(model.gameDownloadFailed(), false);
        QCOMPARE(model.notice(), std::nullopt);
        QCOMPARE(model.offerExternal(), std::nullopt);
        QVERIFY(!model.updateOffer());
        QCOMPARE(model.confirmReset(), false);
        QCOMPARE(model.setupDone(), false);
        QCOMPARE(model.aresVersion(), std::nullopt);
        QCOMPARE(model.usingExternalAres(), false);
        QCOMPARE(model.fullscreen(), false);
        QCOMPARE(Sandbox::storage(), QStringList());
    }

    void fullScreenIsKeptOverARestart()
    {
        AppModel().setFullscreen(true);
        AppModel second;
        QCOMPARE(second.fullscreen(), true);
        second.setFullscreen(false);
        QCOMPARE(AppModel().fullscreen(), false);
    }

    void fullScreenIsShownBeforeItIsStored()
    {
        AppModel model;
        bool stored = true;
        connect(&model, &AppModel::fullscreenChanged, this,
                [&] { stored = Preferences::boolean(PreferenceKeys::fullscreen); });
        model.setFullscreen(true);
        QCOMPARE(stored, false);
        QCOMPARE(Preferences::boolean(PreferenceKeys::fullscreen), true);
    }

    void setupIsDoneWithAnEmulatorAndAGameEvenIfItIsDamaged()
    {
        installAres("v147");
        QCOMPARE(AppModel().setupDone(), false);
        writeFile(Paths::gameFile(), "damaged");
        QCOMPARE(AppModel().setupDone(), true);
        fs::remove_all(Paths::ares());
        QCOMPARE(AppModel().setupDone(), false);
    }

    void theChosenEmulatorWinsOverTheInstalledOne()
    {
        installAres("v147");
        const auto own = makeAresApp(m_sandbox->scratch());
        chooseExternal(own);
        const AppModel model;
        QCOMPARE(model.locateAres(), own);
        QCOMPARE(model.usingExternalAres(), true);
        QCOMPARE(model.aresVersion(), std::nullopt);
    }

    void aChosenEmulatorThatIsGoneLeavesTheInstalledOne()
    {
        installAres("v147");
        chooseExternal(m_sandbox->scratch() / "gone/ares.app");
        const AppModel model;
        QCOMPARE(model.usingExternalAres(), false);
        QCOMPARE(model.aresVersion(), QStringLiteral("v147"));
        QCOMPARE(model.locateAres(), Paths::ares() / "ares.app");
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
        const AppModel model;
        QCOMPARE(model.externalPreference(), std::nullopt);
        QCOMPARE(model.usingExternalAres(), false);
    }

    void anEmulatorElsewhereOnTheMachineIsNeverLocated()
    {
        makeAresApp(m_sandbox->home() / "Applications");
        QCOMPARE(AppModel().locateAres(), std::nullopt);
    }

    void onlyTheTwoDownloadsCanBeCancelled()
    {
        AppModel model;
        for (const auto stage : {Stage::gettingAres, Stage::gettingGame}) {
            ModelProbe::setStage(model, stage);
            QVERIFY(model.canCancel());
        }
        for (const auto stage : {Stage::idle, Stage::starting, Stage::playing}) {
            ModelProbe::setStage(model, stage);
            QVERIFY(!model.canCancel());
        }
    }

    void clearingTheMessagesLeavesTheOffersAndTheProgress()
    {
        AppModel model;
        ModelProbe::setErrorMessage(model, QStringLiteral("message"));
        ModelProbe::setErrorDetails(model, QStringLiteral("details"));
        ModelProbe::setGameDownloadFailed(model, true);
        ModelProbe::setNotice(model, QStringLiteral("notice"));
        ModelProbe::setOfferExternal(model, "/opt/ares.app");
        ModelProbe::setUpdateOffer(model, AresRelease{QStringLiteral("v148"), {}, {}, 0});
        ModelProbe::setStage(model, Stage::gettingGame);
        ModelProbe::setFraction(model, 0.5);
        ModelProbe::setDetailLine(model, QStringLiteral("line"));

        const ModelRecorder recorder(model);
        model.clearMessages();

        QCOMPARE(recorder.changes(),
                 (QStringList{QStringLiteral("errorMessage none"), QStringLiteral("errorDetails"),
                              QStringLiteral("gameDownloadFailed false"), QStringLiteral("notice none")}));
        QCOMPARE(model.offerExternal(), fs::path("/opt/ares.app"));
        QCOMPARE(model.updateOffer()->tagName, QStringLiteral("v148"));
        QCOMPARE(model.stage(), Stage::gettingGame);
        QCOMPARE(model.fraction(), 0.5);
        QCOMPARE(model.detailLine(), QStringLiteral("line"));
    }

    void everyWriteIsAnnouncedBeforeItIsMade()
    {
        AppModel model;
        QList<Stage> before;
        connect(&model, &AppModel::objectWillChange, this, [&] { before.append(model.stage()); });
        ModelProbe::setStage(model, Stage::gettingAres);
        ModelProbe::setStage(model, Stage::gettingAres);
        ModelProbe::setStage(model, Stage::idle);
        QCOMPARE(before, (QList{Stage::idle, Stage::gettingAres, Stage::gettingAres}));
    }

    void whatIsAbsentIsUndefinedToTheWindow()
    {
        AppModel model;
        for (const char* const field :
             {"fraction", "errorMessage", "notice", "offerExternal", "updateOffer", "aresVersion"})
            QVERIFY2(!model.property(field).isValid(), field);
        ModelProbe::setOfferExternal(model, "/opt/ares.app");
        QCOMPARE(model.property("offerExternal").toString(), QStringLiteral("/opt/ares.app"));
        QCOMPARE(model.property("stage").toString(), QStringLiteral("idle"));
    }

    void theModelMayGoWhileATaskIsAboutToBegin()
    {
        auto model = std::make_unique<AppModel>();
        model->play();
        model.reset();
        QCoreApplication::processEvents();
        QCOMPARE(Sandbox::storage(), QStringList());
    }
};

QTEST_GUILESS_MAIN(AppModelTest)
#include "tst_AppModel.moc"
