// SPDX-License-Identifier: MIT
#include "emulator/AresInstaller.h"
#include "platform/Text.h"
#include "storage/Paths.h"
#include "support/AresBundle.h"
#include "support/Checked.h"
#include "support/EventLoopWait.h"
#include "support/FaultTest.h"
#include "support/Snapshot.h"
#include "support/Unprivileged.h"

#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;
using Stage = AppModel::Stage;

/// The installed copy, the kept one, the version file, and what interrupted runs leave of them.
class KeptCopyTest : public FaultTest
{
    Q_OBJECT

    static inline const QStringList settled{QStringLiteral("Ares"), QStringLiteral("ares-version.txt")};

    static void makeCopy(const fs::path& folder, const QByteArray& tag)
    {
        writeFile(makeAresApp(folder) / "tag", tag);
    }

private Q_SLOTS:
    void discardKeepsTheInstalledCopyOnly()
    {
        installAres("v148");
        makeCopy(Paths::aresOld(), "v147");
        writeFile(Paths::newWorkDir("discarded") / "part", "left over");
        for (int time = 0; time < 2; ++time) {
            const auto cleared = AresInstaller::discardOldCopy();
            QVERIFY(!fs::exists(Paths::aresOld()));
            QVERIFY(comesTrue([&] { return cleared.isReady(); }));
            QCOMPARE(installedTag(), QByteArray("v148"));
            QCOMPARE(Sandbox::storage(), settled);
        }
    }

    void rollbackRestoresTheKeptCopy()
    {
        installAres("v148");
        makeCopy(Paths::aresOld(), "v147");
        QVERIFY(AresInstaller::rollback());
        QCOMPARE(installedTag(), QByteArray("v147"));
        // The release that failed, so that it is not offered again.
        QCOMPARE(AresInstaller::installedVersion(), QStringLiteral("v148"));
        QCOMPARE(Sandbox::storage(), settled);
    }

    void rollbackChangesNothingIfACopyIsMissing_data()
    {
        QTest::addColumn<bool>("installed");
        QTest::newRow("no kept copy") << true;
        QTest::newRow("no installed copy") << false;
    }

    void rollbackChangesNothingIfACopyIsMissing()
    {
        QFETCH(const bool, installed);
        makeCopy(installed ? Paths::ares() : Paths::aresOld(), "v147");
        const auto before = snapshotOf(Paths::support());
        QVERIFY(!AresInstaller::rollback());
        QCOMPARE(snapshotOf(Paths::support()), before);
    }

    void keptCopyBesideAnInstalledOneStaysKept()
    {
        installAres("v147");
        makeCopy(Paths::aresOld(), "v146");
        const auto before = snapshotOf(Paths::support());
        QVERIFY(!AresInstaller::recover());
        QCOMPARE(snapshotOf(Paths::support()), before);
    }

    void onlyAWholeCopyIsKept_data()
    {
        QTest::addColumn<bool>("isWhole");
        QTest::newRow("72 update, Ares without ares.app, a whole kept copy") << true;
        QTest::newRow("72 update, neither is a copy") << false;
    }

    void onlyAWholeCopyIsKept()
    {
        QFETCH(const bool, isWhole);
        writeFile(Paths::ares() / "something else", "");
        if (isWhole)
            makeCopy(Paths::aresOld(), "v146");
        else
            writeFile(Paths::aresOld() / "something else", "");
        writeFile(Paths::aresVersion(), "v146");
        restart();
        CHECKED(update());
        QCOMPARE(installedTag(), QByteArray("v147"));
        QCOMPARE(fs::exists(Paths::aresOld()), isWhole);
        if (isWhole)
            QCOMPARE(readFile(Paths::aresOld() / "ares.app/tag"), QByteArray("v146"));
        isAtRestWithoutTraces();
    }

    /// The folder may hold a copy that shows again later.
    void unreadableFolderIsNeverDiscarded()
    {
        makeCopy(Paths::ares() / "locked", "v146");
        makeCopy(Paths::aresOld(), "v145");
        m_sandbox->giveToEveryone();
        const auto installed = snapshotOf(Paths::ares());
        const auto kept = snapshotOf(Paths::aresOld());
        fs::permissions(Paths::ares() / "locked", fs::perms::none);
        {
            const Unprivileged unprivileged;
            QVERIFY(!AresInstaller::recover());
            m_model->installUpdate({QStringLiteral("v147"), QStringLiteral("ares-macos-universal.zip"),
                                    m_sites->url(ScriptedSites::archive).toEncoded().toStdString(), 0});
            QVERIFY(comesToRest());
        }
        fs::permissions(Paths::ares() / "locked", fs::perms::all);
        QVERIFY2(message().startsWith(QStringLiteral("Updating Ares failed: ")), qPrintable(message()));
        QCOMPARE(snapshotOf(Paths::ares()), installed);
        QCOMPARE(snapshotOf(Paths::aresOld()), kept);
    }

    void versionFileIsReadLeniently_data()
    {
        QTest::addColumn<QByteArray>("contents");
        QTest::addColumn<std::optional<QString>>("version");
        const std::optional<QString> none;
        QTest::newRow("71 10 MB") << QByteArray(10'000'000, 'v')
                                  << std::optional(QString(qsizetype(64 * 1024), u'v'));
        QTest::newRow("71 10 MB of blanks") << QByteArray(10'000'000, ' ') << none;
        QTest::newRow("71 binary") << QByteArray::fromHex("00ff80fe0001") << none;
        QTest::newRow("71 empty") << QByteArray() << none;
        QTest::newRow("71 line feeds around it")
            << QByteArray("\n\nv146\n\n") << std::optional(QStringLiteral("v146"));
        QTest::newRow("71 blanks around it")
            << QByteArray(" \tv146\r\n ") << std::optional(QStringLiteral("v146"));
        QTest::newRow("71 not UTF-8") << QByteArray("v146\xff") << none;
        QTest::newRow("71 line feeds within it")
            << QByteArray("v1\nv2\r\nv3") << std::optional(QStringLiteral("v1\nv2\r\nv3"));
        QTest::newRow("71 markup") << QByteArray("<b>%1</b>") << std::optional(QStringLiteral("<b>%1</b>"));
    }

    void versionFileIsReadLeniently()
    {
        QFETCH(const QByteArray, contents);
        QFETCH(const std::optional<QString>, version);
        installAres();
        saveGame();
        writeFile(Paths::aresVersion(), contents);
        restart();
        const std::optional<QString> shown = m_model->aresVersion();
        QCOMPARE(shown, version);
        remember();
        CHECKED(pressPlays());
        CHECKED(nothingChanged());
        CHECKED(update());
        QCOMPARE(m_model->aresVersion(), QStringLiteral("v147"));
        QCOMPARE(readFile(Paths::aresVersion()), QByteArray("v147"));
        isAtRestWithoutTraces();
    }

    void folderInPlaceOfTheVersionFileIsIgnored_data() { addOnlyRow("71 a folder"); }

    void folderInPlaceOfTheVersionFileIsIgnored()
    {
        fs::create_directories(Paths::aresVersion() / "in the way");
        saveGame();
        restart();
        CHECKED(pressPlays());
        QCOMPARE(m_model->aresVersion(), std::nullopt);
    }

    void wholeCopyIsPlayedWhateverWasLeft_data()
    {
        QTest::addColumn<bool>("installed");
        QTest::addColumn<bool>("old");
        QTest::addColumn<bool>("unfinished");
        QTest::addColumn<bool>("offline");
        QTest::addColumn<bool>("stray");
        const auto row = [](const char* name, bool installed, bool old, bool unfinished) {
            QTest::addRow("72 %s", name) << installed << old << unfinished << false << false;
            if (installed || old)
                QTest::addRow("72 %s, offline", name) << installed << old << unfinished << true << false;
        };
        QTest::newRow("72 Ares without ares.app, with Ares-old, offline")
            << false << true << false << true << true;
        row("Ares-old without Ares", false, true, false);
        row("Ares-new left over", true, false, true);
        row("Ares-new alone", false, false, true);
        row("Ares-new and Ares-old, with Ares", true, true, true);
        row("Ares-new and Ares-old without Ares", false, true, true);
    }

    /// A whole copy is played; a partial one is never taken for one.
    void wholeCopyIsPlayedWhateverWasLeft()
    {
        QFETCH(const bool, installed);
        QFETCH(const bool, old);
        QFETCH(const bool, unfinished);
        QFETCH(const bool, offline);
        QFETCH(const bool, stray);
        if (stray)
            writeFile(Paths::ares() / "something else", "");
        if (installed)
            installAres("v146");
        if (old)
            makeCopy(Paths::aresOld(), "v145");
        if (unfinished)
            writeFile(Paths::aresNew() / "ares.app/half", "of one");
        saveGame();
        restart();
        if (offline)
            m_sites->answers.clear();
        m_model->play();
        QVERIFY2(goesThrough(Stage::playing), qPrintable(message() + m_model->errorDetails()));
        QVERIFY(m_model->setupDone());
        CHECKED(isAtRestWithoutTraces());
        // The emulator ends at once, so that a kept copy is put back in place of the one that was played.
        QCOMPARE(installedTag(), old         ? QByteArray("v145")
                                 : installed ? QByteArray("v146")
                                             : QByteArray("v147"));
        QVERIFY(!fs::exists(Paths::ares() / "ares.app/half"));
        QCOMPARE(m_sites->asked().isEmpty(), installed || old);
        m_sites->mend();
        pressPlaysWithLeftovers();
    }

private:
    void pressPlaysWithLeftovers()
    {
        m_model->play();
        QVERIFY(goesThrough(Stage::playing));
        // Leftovers are deleted by the next download.
        m_sites->publish(m_sites->body(ScriptedSites::archive), "v148");
        CHECKED(update());
        const QStringList whole{QStringLiteral("Ares"), QStringLiteral("Ares-old"),
                                QStringLiteral("Quillet64.z64"), QStringLiteral("ares-version.txt")};
        QCOMPARE(Sandbox::storage(), whole);
    }
};

QTEST_GUILESS_MAIN(KeptCopyTest)
#include "tst_KeptCopy.moc"
