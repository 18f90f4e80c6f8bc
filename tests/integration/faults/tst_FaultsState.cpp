// SPDX-License-Identifier: MIT
#include "core/Paths.h"
#include "core/PreferenceKeys.h"
#include "platform/Preferences.h"
#include "platform/Text.h"
#include "support/AresBundle.h"
#include "support/FaultTest.h"

#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;
using Stage = AppModel::Stage;

/// What an earlier run, or something else, has left on the disk.
class FaultsStateTest : public FaultTest
{
    Q_OBJECT

    [[nodiscard]] fs::path store() const { return m_sandbox->home() / "config/Cartloom/Cartloom.conf"; }

    static void makeCopy(const fs::path& folder, const QByteArray& tag)
    {
        writeFile(makeAresApp(folder) / "tag", tag);
    }

private Q_SLOTS:
    void aDamagedPreferenceFile_data()
    {
        QTest::addColumn<QByteArray>("contents");
        const QByteArray general("[General]\n");
        const QByteArray path = general + "externalAresPath=";
        QTest::newRow("70 empty") << QByteArray();
        QTest::newRow("70 truncated") << QByteArray("[General]\nfullscr");
        QTest::newRow("70 truncated in a value") << path + "\"/tmp/not the who";
        QTest::newRow("70 binary") << QByteArray(4096, '\xff');
        QTest::newRow("70 zeros") << QByteArray(4096, '\0');
        QTest::newRow("70 invalid values") << path + "@Invalid()\nfullscreen=@Invalid()\n";
        QTest::newRow("70 lists") << path + "/tmp, /\nfullscreen=true, true\n";
        QTest::newRow("70 bytes") << path + "@ByteArray(/tmp)\nfullscreen=@ByteArray(true)\n";
        QTest::newRow("70 numbers") << path + "5\nfullscreen=5\n";
        QTest::newRow("70 broken variants") << path + "@Variant(\\0\\0)\nfullscreen=@Variant(\\0)\n";
        QTest::newRow("70 relative path") << path + "tmp\n";
        QTest::newRow("70 relative path with dots") << path + "../../../../../../tmp\n";
        QTest::newRow("70 address of a file") << path + "file:///tmp\n";
        QTest::newRow("70 address of another machine") << path + "https://example.org/ares.app\n";
        QTest::newRow("70 path that has gone") << path + "/nothing/ares.app\n";
        QTest::newRow("70 path with a null character") << path + "/tmp\\x0/ares.app\n";
        QTest::newRow("70 path of a million letters") << path + '/' + QByteArray(1'000'000, 'x') + '\n';
    }

    void aDamagedPreferenceFile()
    {
        QFETCH(const QByteArray, contents);
        writeFile(store(), contents);
        installAres();
        saveGame();
        restart();
        QCOMPARE(m_model->fullscreen(), false);
        QCOMPARE(m_model->usingExternalAres(), false);
        QCOMPARE(m_model->aresVersion(), QStringLiteral("v146"));
        remember();
        pressPlays();
        nothingChanged();
        QCOMPARE(m_sites->asked(), QStringList());
        m_model->setFullscreen(true);
        restart();
        QCOMPARE(m_model->fullscreen(), true);
    }

    void aPreferenceFileThatCannotBeWritten_data() { addOnlyRow("70 unwritable"); }

    void aPreferenceFileThatCannotBeWritten()
    {
        installAres();
        saveGame();
        writeFile(m_sandbox->home() / "config/Cartloom", "in the way");
        restart();
        remember();
        m_model->setFullscreen(true);
        QCOMPARE(m_model->fullscreen(), true);
        pressPlays();
        nothingChanged();
        restart();
        QCOMPARE(m_model->fullscreen(), false);
    }

    void aFolderForAres_data() { addOnlyRow("70 a folder that is no ares.app"); }

    /// The player's own choice; forgetting it is a press away.
    void aFolderForAres()
    {
        Preferences::setText(PreferenceKeys::externalAres, toText(outside()));
        saveGame();
        restart();
        QCOMPARE(m_model->usingExternalAres(), true);
        press();
        shows({QStringLiteral("Could not find the program inside ares.app."), toText(outside())});
        nothingChanged();
        m_model->reset();
        QCOMPARE(m_model->usingExternalAres(), false);
        nextPressPlays();
    }

    void anOddVersionFile_data()
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
        QTest::newRow("71 line feeds within it")
            << QByteArray("v1\nv2\r\nv3") << std::optional(QStringLiteral("v1\nv2\r\nv3"));
        QTest::newRow("71 markup") << QByteArray("<b>%1</b>") << std::optional(QStringLiteral("<b>%1</b>"));
    }

    void anOddVersionFile()
    {
        QFETCH(const QByteArray, contents);
        QFETCH(const std::optional<QString>, version);
        installAres();
        saveGame();
        writeFile(Paths::aresVersion(), contents);
        restart();
        QCOMPARE(m_model->aresVersion(), version);
        remember();
        pressPlays();
        nothingChanged();
        update();
        QCOMPARE(m_model->aresVersion(), QStringLiteral("v147"));
        QCOMPARE(readFile(Paths::aresVersion()), QByteArray("v147"));
        isAtRestWithoutTraces();
    }

    void aFolderForTheVersionFile_data() { addOnlyRow("71 a folder"); }

    void aFolderForTheVersionFile()
    {
        fs::create_directories(Paths::aresVersion() / "in the way");
        saveGame();
        restart();
        pressPlays();
        QCOMPARE(m_model->aresVersion(), std::nullopt);
    }

    void leftovers_data()
    {
        QTest::addColumn<bool>("installed");
        QTest::addColumn<bool>("old");
        QTest::addColumn<bool>("unfinished");
        QTest::addColumn<bool>("offline");
        const auto row = [](const char* name, bool installed, bool old, bool unfinished) {
            QTest::addRow("72 %s", name) << installed << old << unfinished << false;
            if (installed || old)
                QTest::addRow("72 %s, offline", name) << installed << old << unfinished << true;
        };
        row("Ares-old without Ares", false, true, false);
        row("Ares-new left over", true, false, true);
        row("Ares-new alone", false, false, true);
        row("Ares-new and Ares-old, with Ares", true, true, true);
        row("Ares-new and Ares-old without Ares", false, true, true);
    }

    /// A whole copy is played, whichever there is; a half one is never taken for one.
    void leftovers()
    {
        QFETCH(const bool, installed);
        QFETCH(const bool, old);
        QFETCH(const bool, unfinished);
        QFETCH(const bool, offline);
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
        isAtRestWithoutTraces();
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
        // What is left is gone at the latest after the next download.
        m_sites->publish(m_sites->body(ScriptedSites::archive), "v148");
        update();
        const QStringList whole{QStringLiteral("Ares"), QStringLiteral("Ares-old"),
                                QStringLiteral("Quillet64.z64"), QStringLiteral("ares-version.txt")};
        QCOMPARE(Sandbox::storage(), whole);
    }
};

QTEST_GUILESS_MAIN(FaultsStateTest)
#include "tst_FaultsState.moc"
