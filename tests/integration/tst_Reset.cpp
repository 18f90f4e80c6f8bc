// SPDX-License-Identifier: MIT
#include "core/PreferenceKeys.h"
#include "platform/Preferences.h"
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

namespace
{

const auto notice = QStringLiteral("Everything was deleted. The next click downloads it again.");

} // namespace

class ResetTest : public FlowTest
{
    Q_OBJECT

private Q_SLOTS:
    void everythingIsDeletedAndTheNextPressFetchesItAgain()
    {
        installAres();
        saveGame();
        writeFile(Paths::aresOld() / "ares.app/old", "old");
        writeFile(Paths::aresNew() / "ares.app/new", "new");
        restart();
        QVERIFY(m_model->setupDone());
        m_model->reset();
        QCOMPARE(Sandbox::storage(), QStringList());
        QVERIFY(fs::exists(Paths::support()));
        QCOMPARE(m_model->notice(), notice);
        QCOMPARE(m_model->setupDone(), false);
        QCOMPARE(m_model->aresVersion(), std::nullopt);
        m_model->play();
        QVERIFY(goesThrough(Stage::playing));
        QCOMPARE(m_sites->asked().size(), 5);
    }

    void theChangesComeInOrder()
    {
        m_model->reset();
        QCOMPARE(m_recorder->changes(),
                 (QStringList{QStringLiteral("errorMessage none"), QStringLiteral("errorDetails"),
                              QStringLiteral("gameDownloadFailed false"), QStringLiteral("notice none"),
                              QStringLiteral("setupDone false"), QStringLiteral("usingExternalAres false"),
                              QStringLiteral("aresVersion none"), QStringLiteral("notice ") + notice}));
    }

    void aResetWhileSomethingRunsChangesNothing_data()
    {
        QTest::addColumn<Stage>("stage");
        QTest::newRow("gettingAres") << Stage::gettingAres;
        QTest::newRow("gettingGame") << Stage::gettingGame;
        QTest::newRow("starting") << Stage::starting;
        QTest::newRow("playing") << Stage::playing;
    }

    void aResetWhileSomethingRunsChangesNothing()
    {
        QFETCH(const Stage, stage);
        saveGame();
        m_model->stage = stage;
        m_recorder->clear();
        m_model->reset();
        QCOMPARE(m_recorder->changes(), QStringList());
        QVERIFY(fs::exists(Paths::gameFile()));
    }

    void aResetBetweenAPressAndItsStartChangesNothing()
    {
        installAres();
        saveGame();
        m_model->play();
        m_model->reset();
        QVERIFY(fs::exists(Paths::gameFile()));
        QVERIFY(goesThrough(Stage::playing));
    }

    void anEmptyStorageFolderIsNoFailure()
    {
        fs::create_directories(Paths::support());
        m_model->reset();
        QCOMPARE(m_model->notice(), notice);
    }

    void aMissingStorageFolderIsNoFailure()
    {
        m_model->reset();
        QCOMPARE(m_model->notice(), notice);
        QVERIFY(!fs::exists(Paths::support()));
    }

    void whatCannotBeDeletedStaysAndTheNoticeComesAllTheSame()
    {
        installAres();
        saveGame();
        restart();
        m_sandbox->giveToEveryone();
        fs::permissions(Paths::support(), fs::perms(0555));
        {
            const Unprivileged unprivileged;
            m_model->reset();
        }
        fs::permissions(Paths::support(), fs::perms(0755));
        QCOMPARE(m_model->notice(), notice);
        QCOMPARE(m_model->errorMessage(), std::nullopt);
        QCOMPARE(Sandbox::storage().size(), 3);
        // What is shown is what there is.
        QCOMPARE(m_model->setupDone(), true);
    }

    void oneFailureDoesNotEndIt()
    {
        if (::geteuid() != 0)
            QSKIP("needs a second user");
        installAres();
        m_sandbox->giveToEveryone();
        fs::permissions(Paths::support(), fs::perms::all | fs::perms::sticky_bit);
        {
            const Unprivileged unprivileged;
            saveGame();
            fs::create_directories(Paths::aresOld());
            fs::create_directories(Paths::aresNew());
            m_model->reset();
        }
        QCOMPARE(Sandbox::storage(),
                 (QStringList{QStringLiteral("Ares"), QStringLiteral("ares-version.txt")}));
        QCOMPARE(m_model->notice(), notice);
    }

    void theCopyThatWasChosenIsOfferedAgain()
    {
        const auto found = makeAresApp(m_sandbox->home() / "Applications");
        Preferences::setText(PreferenceKeys::externalAres, toText(found));
        restart();
        m_model->reset();
        m_model->play();
        QTRY_COMPARE(m_model->offerExternal(), found);
    }

    void theChosenEmulatorIsForgottenAndLeftAlone()
    {
        const auto own = makeAresApp(m_sandbox->scratch() / "own");
        Preferences::setText(PreferenceKeys::externalAres, toText(own));
        restart();
        QVERIFY(m_model->usingExternalAres());
        m_model->reset();
        QCOMPARE(m_model->usingExternalAres(), false);
        QCOMPARE(Preferences::text(PreferenceKeys::externalAres), std::nullopt);
        QVERIFY(fs::exists(own));
    }

    void whatIsKeptIsKept()
    {
        m_model->setFullscreen(true);
        const auto partial = Paths::newWorkDir("download-game");
        m_model->offerExternal = "/opt/ares.app";
        m_model->updateOffer = AresRelease{QStringLiteral("v148"), {}, {}, 0};
        ModelProbe::setPendingROM(*m_model, "/own.z64");
        m_model->reset();
        QCOMPARE(m_model->fullscreen(), true);
        QCOMPARE(AppModel::create()->fullscreen(), true);
        QCOMPARE(Sandbox::storage(), QStringList{toText(partial.filename())});
        QCOMPARE(m_model->offerExternal(), fs::path("/opt/ares.app"));
        QVERIFY(m_model->updateOffer().has_value());
        QCOMPARE(ModelProbe::pendingROM(*m_model), fs::path("/own.z64"));
    }
};

QTEST_GUILESS_MAIN(ResetTest)
#include "tst_Reset.moc"
