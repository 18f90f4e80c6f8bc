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

const auto opening = QStringLiteral("Ares stopped right away (exit code %1).");
const auto hint = QStringLiteral("\n\nIf macOS blocked it, open System Settings, then Privacy and Security, "
                                 "and click Open Anyway next to ares.");
const auto putBack = QStringLiteral("\n\nThe new Ares did not work, so the previous version was put back.");

constexpr StartedAres updated{.isOwn = true, .justUpdated = true};

} // namespace

/// How a run of the emulator is judged when it has ended.
class EmulatorExitTest : public FlowTest
{
    Q_OBJECT

    void judge(const LaunchResult& result, StartedAres started = {.isOwn = true})
    {
        m_model->stage = Stage::playing;
        m_recorder->clear();
        m_model->didExit(result, started);
        QCOMPARE(m_model->stage(), Stage::idle);
    }

    /// As after an update: a new copy installed, the old one kept.
    void update()
    {
        installAres("v147");
        fs::rename(Paths::ares(), Paths::aresOld());
        installAres("v148");
        saveGame();
        restart();
    }

    static QByteArray installedTag() { return readFile(Paths::ares() / "ares.app/tag"); }

private Q_SLOTS:
    void threeSecondsWithStatusZeroAreAGoodRun()
    {
        judge({0, 3.0, QStringLiteral("some warning\n")});
        QCOMPARE(m_recorder->changes(), QStringList{QStringLiteral("stage idle")});
    }

    void whatWasLeftOverIsClearedAwayAfterAGoodRunAndCountsAsWork()
    {
        installAres();
        writeFile(Paths::support() / "discarded-0F8FAD5B-D9CB-469F-A165-70867728950E/part", "part");
        judge({0, 3.0, QString()});
        QVERIFY(m_model->hasWorkUnderWay());
        QTRY_VERIFY(!m_model->hasWorkUnderWay());
        QCOMPARE(Sandbox::storage(),
                 (QStringList{QStringLiteral("Ares"), QStringLiteral("ares-version.txt")}));
    }

    void aLongRunWithAnotherStatusButNoOutputIsAGoodRun()
    {
        judge({1, 3600, QString()});
        QCOMPARE(m_model->errorMessage(), std::nullopt);
    }

    void aShorterRunIsReportedEvenWithStatusZeroAndNoOutput()
    {
        judge({0, 2.9, QString()});
        QCOMPARE(m_model->errorMessage(), opening.arg(0) + hint);
        QCOMPARE(m_model->errorDetails(), QString());
    }

    void aRunOfAnHourThatEndsBadlyHasTheSameOpening()
    {
        judge({1, 3600, QStringLiteral("it went wrong\n")});
        QCOMPARE(m_model->errorMessage(), opening.arg(1) + QStringLiteral("\n\nit went wrong") + hint);
        QCOMPARE(m_model->errorDetails(), QStringLiteral("it went wrong\n"));
    }

    void blankOutputIsOutput()
    {
        judge({1, 3600, QStringLiteral(" \n")});
        QCOMPARE(m_model->errorMessage(), opening.arg(1) + QStringLiteral("\n\n ") + hint);
        QCOMPARE(m_model->errorDetails(), QStringLiteral(" \n"));
    }

    void theStatusIsSigned()
    {
        judge({-5, 1, QString()});
        QCOMPARE(m_model->errorMessage(), opening.arg(-5) + hint);
    }

    void fiveLinesAreQuotedAndAllAreInTheDetails()
    {
        const auto output = QStringLiteral("1\n\n2\n3\n\n\n4\n5\n6\n7\n");
        judge({2, 0.1, output});
        QCOMPARE(m_model->errorMessage(), opening.arg(2) + QStringLiteral("\n\n1\n2\n3\n4\n5") + hint);
        QCOMPARE(m_model->errorDetails(), output);
    }

    void outputThatLooksLikeAPlaceholderIsQuotedAsItIs()
    {
        judge({2, 0.1, QStringLiteral("%1 %2")});
        QCOMPARE(m_model->errorMessage(), opening.arg(2) + QStringLiteral("\n\n%1 %2") + hint);
    }

    void outputOfLineFeedsAloneIsNotQuoted()
    {
        judge({2, 0.1, QStringLiteral("\n\n\n")});
        QCOMPARE(m_model->errorMessage(), opening.arg(2) + hint);
        QCOMPARE(m_model->errorDetails(), QStringLiteral("\n\n\n"));
    }

    void aGoodRunCommitsTheNewEmulator()
    {
        update();
        judge({0, 3.0, QString()}, updated);
        QVERIFY(!fs::exists(Paths::aresOld()));
        QCOMPARE(installedTag(), QByteArray("v148"));
    }

    void goodRunOfThePlayersOwnCopyCommitsNothing()
    {
        update();
        judge({0, 3.0, QString()}, {.isOwn = false});
        QVERIFY(!m_model->hasWorkUnderWay());
        QVERIFY(fs::exists(Paths::aresOld()));
    }

    void failedRunOfThePlayersOwnCopyPutsNothingBack()
    {
        update();
        const auto own = m_sandbox->scratch() / "own";
        Preferences::setText(PreferenceKeys::externalAres, toText(makeAresApp(own)));
        restart();
        scriptChild({QStringLiteral("exit 3")});
        m_model->play();
        QVERIFY(goesThrough(Stage::playing));
        QCOMPARE(m_model->errorMessage(), opening.arg(3) + hint);
        QCOMPARE(installedTag(), QByteArray("v148"));
        QVERIFY(fs::exists(Paths::aresOld()));
    }

    void keptFolderWithoutACopyIsNotPutBack()
    {
        writeFile(Paths::aresOld() / "junk", "junk");
        saveGame();
        restart();
        scriptChild({QStringLiteral("exit 3")});
        m_model->play();
        QVERIFY(goesThrough(Stage::playing));
        QCOMPARE(m_model->errorMessage(), opening.arg(3) + hint);
        QCOMPARE(m_model->aresVersion(), QStringLiteral("v147"));
        QVERIFY(fs::exists(Paths::ares() / "ares.app"));
        QVERIFY(!fs::exists(Paths::aresOld()));
    }

    void aFailedFirstRunPutsThePreviousEmulatorBack()
    {
        update();
        judge({1, 0.5, QStringLiteral("no\n")}, updated);
        QCOMPARE(m_model->errorMessage(), opening.arg(1) + QStringLiteral("\n\nno") + putBack);
        QCOMPARE(installedTag(), QByteArray("v147"));
        QVERIFY(!fs::exists(Paths::aresOld()));
        QVERIFY(m_recorder->changes().contains(QStringLiteral("aresVersion v148")));
    }

    void withoutAnUpdateNothingIsPutBack()
    {
        update();
        judge({1, 0.5, QString()});
        QCOMPARE(m_model->errorMessage(), opening.arg(1) + hint);
        QCOMPARE(installedTag(), QByteArray("v148"));
        QVERIFY(fs::exists(Paths::aresOld()));
    }

    void anUpdateThatCannotBePutBackGetsTheHint()
    {
        installAres("v148");
        restart();
        judge({1, 0.5, QString()}, updated);
        QCOMPARE(m_model->errorMessage(), opening.arg(1) + hint);
    }

    void aFailedFirstStartAfterAnUpdateIsRolledBackByItself()
    {
        update();
        scriptChild({QStringLiteral("err crashed"), QStringLiteral("exit 3")});
        m_model->play();
        QVERIFY(goesThrough(Stage::playing));
        QCOMPARE(m_model->errorMessage(), opening.arg(3) + QStringLiteral("\n\ncrashed") + putBack);
        QCOMPARE(installedTag(), QByteArray("v147"));
    }

    void whetherItWasUpdatedIsDecidedAtTheStart()
    {
        installAres("v148");
        saveGame();
        restart();
        const auto proceed = m_sandbox->scratch() / "proceed";
        scriptChild({QStringLiteral("wait ") + toText(proceed), QStringLiteral("exit 3")});
        m_model->play();
        QVERIFY(comesTo(Stage::playing));
        writeFile(Paths::aresOld() / "ares.app/tag", "v147");
        writeFile(proceed, "");
        QVERIFY(comesToRest());
        QCOMPARE(m_model->errorMessage(), opening.arg(3) + hint);
        QCOMPARE(installedTag(), QByteArray("v148"));
        QVERIFY(fs::exists(Paths::aresOld()));
    }
};

QTEST_GUILESS_MAIN(EmulatorExitTest)
#include "tst_EmulatorExit.moc"
