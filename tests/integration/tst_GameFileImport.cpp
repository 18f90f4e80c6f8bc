// SPDX-License-Identifier: MIT
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

const QByteArray byteSwapped("\x37\x80\x40\x12");

} // namespace

class GameFileImportTest : public FlowTest
{
    Q_OBJECT

    fs::path rom() const { return m_sandbox->scratch() / "my game.z64"; }
    QString message() const { return m_model->errorMessage().value_or(QStringLiteral("none")); }

    void choose(const fs::path& file)
    {
        QVERIFY(m_model->openPanel()->isOpen());
        m_model->openPanel()->confirm(QUrl::fromLocalFile(toText(file)));
        QVERIFY(!m_model->openPanel()->isOpen());
    }

    void drop(const QList<QUrl>& addresses)
    {
        m_recorder->clear();
        m_model->openDropped(addresses);
    }

private Q_SLOTS:
    void thePanelForTheGameAsksForAnyFile()
    {
        m_model->chooseExistingGameFile();
        const auto& panel = *m_model->openPanel();
        QVERIFY(panel.isOpen());
        QCOMPARE(panel.title(), QStringLiteral("Choose Quillet64.z64"));
        QCOMPARE(panel.message(), QString());
        QCOMPARE(panel.nameFilters(), QStringList());
    }

    void thePanelForARomAsksForTheThreeExtensions()
    {
        m_model->openROM();
        const auto& panel = *m_model->openPanel();
        QVERIFY(panel.isOpen());
        QCOMPARE(panel.title(), QStringLiteral("Choose a Nintendo 64 game"));
        QCOMPARE(panel.message(), QStringLiteral("Pick a .z64 or .v64 ROM file."));
        QCOMPARE(panel.nameFilters(), QStringList{QStringLiteral("Pick a .z64 or .v64 ROM file. "
                                                                 "(*.z64 *.Z64 *.v64 *.V64 *.n64 *.N64)")});
    }

    void noPanelIsShownWhileSomethingRuns_data()
    {
        QTest::addColumn<Stage>("stage");
        QTest::newRow("gettingAres") << Stage::gettingAres;
        QTest::newRow("gettingGame") << Stage::gettingGame;
        QTest::newRow("starting") << Stage::starting;
        QTest::newRow("playing") << Stage::playing;
    }

    void noPanelIsShownWhileSomethingRuns()
    {
        QFETCH(const Stage, stage);
        m_model->stage = stage;
        m_model->openROM();
        QVERIFY(!m_model->openPanel()->isOpen());
        m_model->chooseExistingGameFile();
        QVERIFY(!m_model->openPanel()->isOpen());
    }

    void aPanelThatIsClosedOrGivesNoFileChangesNothing()
    {
        m_model->openROM();
        m_model->openPanel()->dismiss();
        QVERIFY(!m_model->openPanel()->isOpen());
        m_model->chooseExistingGameFile();
        m_model->openPanel()->confirm(QUrl(QStringLiteral("https://example.org/game.z64")));
        QCOMPARE(m_recorder->changes(), QStringList());
        QCOMPARE(Sandbox::storage(), QStringList());
    }

    void aGameFileIsCopiedAndLeftWhereItWas()
    {
        writeFile(Paths::gameFile(), "an older one");
        writeSparse(rom(), bigEndianHeader, 10'000'001);
        m_model->chooseExistingGameFile();
        choose(rom());
        QCOMPARE(m_recorder->changes(),
                 (QStringList{QStringLiteral("errorMessage none"), QStringLiteral("errorDetails"),
                              QStringLiteral("gameDownloadFailed false"), QStringLiteral("notice none"),
                              QStringLiteral("setupDone false"), QStringLiteral("usingExternalAres false"),
                              QStringLiteral("aresVersion none"),
                              QStringLiteral("notice Game file added. Press the button to play.")}));
        QVERIFY(fs::exists(rom()));
        QCOMPARE(fs::file_size(Paths::gameFile()), 10'000'001U);
        QCOMPARE(Sandbox::storage(), QStringList{QStringLiteral("Quillet64.z64")});
    }

    void aByteSwappedGameFileIsRefusedAndTheMessagesOfBeforeStay()
    {
        writeSparse(rom(), byteSwapped, 10'000'000);
        m_model->notice = QStringLiteral("of before");
        m_model->gameDownloadFailed = true;
        m_model->chooseExistingGameFile();
        choose(rom());
        QCOMPARE(message(),
                 QStringLiteral("The file does not look like a .z64 Nintendo 64 game (wrong header)."));
        QCOMPARE(m_model->errorDetails(), QString());
        QCOMPARE(m_model->notice(), QStringLiteral("of before"));
        QCOMPARE(m_model->gameDownloadFailed(), true);
        QCOMPARE(Sandbox::storage(), QStringList());
    }

    void aFileOfTheWrongSizeIsRefusedByBoth_data()
    {
        QTest::addColumn<bool>("strict");
        QTest::addColumn<qint64>("size");
        QTest::addColumn<QString>("kilobytes");
        QTest::newRow("game, too small") << true << qint64(9'999'999) << QStringLiteral("9999 KB");
        QTest::newRow("own ROM, too small") << false << qint64(999'999) << QStringLiteral("999 KB");
        QTest::newRow("own ROM, too large") << false << qint64(128'000'001) << QStringLiteral("128000 KB");
    }

    void aFileOfTheWrongSizeIsRefusedByBoth()
    {
        QFETCH(const bool, strict);
        QFETCH(const qint64, size);
        QFETCH(const QString, kilobytes);
        writeSparse(rom(), bigEndianHeader, size);
        strict ? m_model->chooseExistingGameFile() : m_model->openROM();
        choose(rom());
        QCOMPARE(
            message(),
            QStringLiteral("That file is not the right size for a Nintendo 64 game (%1).").arg(kilobytes));
        QCOMPARE(m_model->errorDetails(), QString());
        QCOMPARE(m_recorder->stages(), QStringList{QStringLiteral("idle")});
        QVERIFY(!ModelProbe::task(*m_model));
        QCOMPARE(Sandbox::storage(), QStringList());
    }

    void choosingTheInstalledGameItselfLosesNothing()
    {
        saveGame();
        m_model->chooseExistingGameFile();
        choose(Paths::gameFile());
        QCOMPARE(m_model->notice(), QStringLiteral("Game file added. Press the button to play."));
        QVERIFY(fs::exists(Paths::gameFile()));
    }

    void aFileChosenAfterSomethingHasBegunIsIgnored()
    {
        writeSparse(rom(), bigEndianHeader, 10'000'000);
        for (const auto open : {&AppModel::chooseExistingGameFile, &AppModel::openROM}) {
            m_model->stage = Stage::idle;
            (m_model.get()->*open)();
            m_model->stage = Stage::gettingGame;
            m_recorder->clear();
            choose(rom());
            QCOMPARE(m_recorder->changes(), QStringList());
        }
        QCOMPARE(Sandbox::storage(), QStringList());
    }

    void aDroppedLinkToItselfIsTheSystemsOwnError()
    {
        fs::create_symlink(rom(), rom());
        drop({QUrl::fromLocalFile(toText(rom()))});
        QVERIFY2(message().startsWith(QStringLiteral("Checking the ROM failed: ")), qPrintable(message()));
    }

    void aGameFileThatCannotBeStoredNamesTheStep()
    {
        writeFile(Paths::support(), "in the way");
        writeSparse(rom(), bigEndianHeader, 10'000'000);
        m_model->chooseExistingGameFile();
        choose(rom());
        QVERIFY2(message().startsWith(QStringLiteral("Adding the game file failed: ")),
                 qPrintable(message()));
        QCOMPARE(m_model->errorDetails().section(u'\n', 0, 0), QStringLiteral("Adding the game file"));
    }

    void aByteSwappedRomIsPlayedAndNeverCopied()
    {
        installAres();
        restart();
        writeSparse(rom(), byteSwapped, 1'000'000);
        const auto arguments = m_sandbox->scratch() / "arguments";
        scriptChild({QStringLiteral("args ") + toText(arguments)});
        m_model->openROM();
        choose(rom());
        QVERIFY(goesThrough(Stage::playing));
        QVERIFY(readFile(arguments).endsWith("/my game.z64\n"));
        QVERIFY(!fs::exists(Paths::gameFile()));
        QCOMPARE(m_sites->asked(), QStringList());
    }

    void aRomMayStopAtTheOfferOfAnEmulator()
    {
        makeAresApp(m_sandbox->home() / "Applications");
        writeSparse(rom(), bigEndianHeader, 1'000'000);
        m_model->openROM();
        choose(rom());
        QTRY_VERIFY(m_model->offerExternal().has_value());
        QCOMPARE(ModelProbe::pendingROM(*m_model), rom());
    }

    void aFileThatIsNoRomIsRefusedAndTheMessagesOfBeforeGo()
    {
        writeSparse(rom(), "text", 1'000'000);
        m_model->notice = QStringLiteral("of before");
        m_model->openROM();
        choose(rom());
        QCOMPARE(message(),
                 QStringLiteral("That file does not look like a Nintendo 64 ROM (.z64 / .v64 / .n64)."));
        QCOMPARE(m_model->notice(), std::nullopt);
        QCoreApplication::processEvents();
        QCOMPARE(m_recorder->stages(), QStringList{QStringLiteral("idle")});
    }

    void aRomThatCannotBeReadNamesTheStep()
    {
        m_model->openROM();
        choose(rom());
        QCOMPARE(message(), QStringLiteral("Checking the ROM failed: No such file or directory"));
        QCOMPARE(m_model->errorDetails(),
                 QStringLiteral("Checking the ROM\nNSPOSIXErrorDomain 2\nNo such file or directory"));
    }

    void aDroppedRomIsPlayed()
    {
        installAres();
        restart();
        writeSparse(rom(), bigEndianHeader, 1'000'000);
        drop({QUrl::fromLocalFile(toText(rom()))});
        QVERIFY(goesThrough(Stage::playing));
    }

    void aDropThatIsNotOneLocalFileIsRefusedWithASentence_data()
    {
        QTest::addColumn<QList<QUrl>>("addresses");
        QTest::addColumn<QString>("sentence");
        const auto folder = QUrl::fromLocalFile(QStringLiteral("/tmp"));
        const auto remote = QUrl(QStringLiteral("https://example.org/game.z64"));
        QTest::newRow("several") << QList{folder, folder} << QStringLiteral("Drop one game file at a time.");
        QTest::newRow("none") << QList<QUrl>() << QStringLiteral("Drop one game file at a time.");
        QTest::newRow("folder") << QList{folder}
                                << QStringLiteral("Drop a game file that is on this computer.");
        QTest::newRow("not local") << QList{remote}
                                   << QStringLiteral("Drop a game file that is on this computer.");
    }

    void aDropThatIsNotOneLocalFileIsRefusedWithASentence()
    {
        QFETCH(const QList<QUrl>, addresses);
        QFETCH(const QString, sentence);
        drop(addresses);
        QCOMPARE(message(), sentence);
        QCOMPARE(m_recorder->stages(), QStringList{QStringLiteral("idle")});
    }

    void aDropWhileSomethingRunsIsIgnored()
    {
        m_model->stage = Stage::gettingGame;
        drop({QUrl::fromLocalFile(QStringLiteral("/tmp"))});
        QCOMPARE(m_recorder->changes(), QStringList());
    }
};

QTEST_GUILESS_MAIN(GameFileImportTest)
#include "tst_GameFileImport.moc"
