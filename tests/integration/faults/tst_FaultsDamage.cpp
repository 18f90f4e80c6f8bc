// SPDX-License-Identifier: MIT
#include "ArchiveFaultTest.h"
#include "core/Paths.h"
#include "platform/Text.h"
#include "support/AresBundle.h"
#include "support/Snapshot.h"

#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

const auto noProgram = QStringLiteral("Could not find the program inside ares.app.");
const auto blockedHint = QStringLiteral("\n\nIf macOS blocked Ares, open System Settings, then Privacy and "
                                        "Security, scroll down and click Open Anyway next to ares.");

} // namespace

/// Archives that are damaged, too much, or hold no emulator that could be started.
class FaultsDamageTest : public ArchiveFaultTest
{
    Q_OBJECT

private Q_SLOTS:
    void specialBits_data()
    {
        QTest::addColumn<quint32>("mode");
        QTest::newRow("43 set-user-id") << 0104755U;
        QTest::newRow("43 set-group-id") << 0102755U;
        QTest::newRow("43 both, and sticky") << 0107755U;
    }

    void specialBits()
    {
        QFETCH(const quint32, mode);
        ZipEntry program = zipProgram();
        program.mode = mode;
        saveGame();
        restart();
        m_sites->publish(zipOf({{"ares.app/", {}, 047755, {}, {}, {}}, program}));
        pressPlays();
        constexpr auto special = fs::perms::set_uid | fs::perms::set_gid;
        for (const auto& entry : fs::recursive_directory_iterator(Paths::ares()))
            QCOMPARE(entry.status().permissions() & special, fs::perms::none);
    }

    void aBadChecksum_data() { addOnlyRow("44 bad CRC"); }

    void aBadChecksum()
    {
        ZipEntry wrong = zipProgram("ares.app/data");
        wrong.checksum = 1;
        isRefused(before({wrong}), QStringLiteral("CRC"));
    }

    void aWrongSize_data()
    {
        QTest::addColumn<quint32>("size");
        QTest::newRow("44 says that it is shorter") << 1U;
        QTest::newRow("44 says that it is longer") << 1'000'000U;
    }

    void aWrongSize()
    {
        QFETCH(const quint32, size);
        ZipEntry wrong = zipZeros("ares.app/data", 1000);
        wrong.size = size;
        isRefused(before({wrong}), QStringLiteral("ares.app/data"));
    }

    void cutOffAtAnyByte_data()
    {
        QTest::addColumn<int>("length");
        const auto whole = static_cast<int>(zipOf({zipProgram()}).size());
        for (int length = 1; length < whole; ++length)
            QTest::addRow("45 cut off after byte %d of %d", length, whole) << length;
    }

    /// The service says nothing of the size here, so that it is the archive itself which shows the damage.
    void cutOffAtAnyByte()
    {
        QFETCH(const int, length);
        installAres();
        saveGame();
        restart();
        m_sites->publish(zipOf({zipProgram()}).left(length));
        m_sites->answers[ScriptedSites::latest] =
            httpAnswer(200, ScriptedSites::release("v147", 0, m_sites->url(ScriptedSites::archive)));
        update();
        QVERIFY(!m_model->errorDetails().isEmpty());
        shows({damaged, m_model->errorDetails()});
        nothingChanged();
        QCOMPARE(installedTag(), QByteArray("v146"));
        pressPlays();
    }

    void nothingInIt_data()
    {
        QTest::addColumn<QByteArray>("zip");
        QTest::newRow("46 zero bytes") << QByteArray();
        QTest::newRow("46 no entry") << zipOf({});
        QTest::newRow("46 empty folders") << zipOf({zipFolderEntry("a"), zipFolderEntry("a/b")});
    }

    void nothingInIt()
    {
        QFETCH(const QByteArray, zip);
        isRefused(zip, {}, withoutApp);
    }

    void aFileWhereAFolderIsNeeded_data()
    {
        QTest::addColumn<QByteArray>("zip");
        QTest::newRow("47 the bundle is a file first") << before({{"ares.app", "file"}});
        QTest::newRow("47 the bundle's folder is a file later")
            << zipOf({zipProgram(), {"ares.app/Contents", "file"}});
    }

    void aFileWhereAFolderIsNeeded()
    {
        QFETCH(const QByteArray, zip);
        isRefused(zip, QStringLiteral("ares.app/Contents"));
    }

    void aBundleThatCannotBeStarted_data()
    {
        QTest::addColumn<QByteArray>("zip");
        QTest::addColumn<bool>("isFound");
        ZipEntry locked = zipProgram();
        locked.mode = 0100644;
        // A program of the right kind of file, for a processor that nobody has.
        QByteArray header = QByteArray::fromHex("7f454c4602010100").leftJustified(64, '\0');
        header[16] = 2;
        header[18] = '\xfe';
        header[19] = '\x7f';
        ZipEntry foreign = zipProgram();
        foreign.contents = header;
        QTest::newRow("48 a plain file") << zipOf({{"ares.app", "file"}}) << false;
        QTest::newRow("48 an empty folder") << zipOf({zipFolderEntry("ares.app")}) << false;
        QTest::newRow("48 not executable") << zipOf({locked}) << false;
        QTest::newRow("48 for another processor") << zipOf({foreign}) << true;
        foreign.contents.clear();
        QTest::newRow("48 an empty program") << zipOf({foreign}) << true;
    }

    void anUpdateThatTheSystemForbidsToStart_data() { addOnlyRow("48 not permitted"); }

    /// It waits for the player, who may permit it; the copy before it stays kept.
    void anUpdateThatTheSystemForbidsToStart()
    {
        installAres();
        saveGame();
        restart();
        ZipEntry forbidden = zipProgram();
        forbidden.contents = "#!/etc/passwd\n";
        m_sites->publish(zipOf({forbidden}));
        update();
        m_model->play();
        QVERIFY(comesToRest());
        auto failure = systemFailure(QStringLiteral("Starting Ares"), EACCES);
        failure.message += blockedHint;
        shows(failure);
        QVERIFY(fs::exists(Paths::aresOld()));
        scriptChild({});
        fs::copy_file(SCRIPTED_CHILD, Paths::ares() / "ares.app/Contents/MacOS/ares",
                      fs::copy_options::overwrite_existing);
        m_model->play();
        QVERIFY(goesThrough(AppModel::Stage::playing));
    }

    /// What the project published is what gets installed. The player is told, and has the way out.
    void aBundleThatCannotBeStarted()
    {
        QFETCH(const QByteArray, zip);
        QFETCH(const bool, isFound);
        Failure failure{noProgram, toText(Paths::ares() / "ares.app")};
        if (isFound) {
            failure = systemFailure(QStringLiteral("Starting Ares"), ENOEXEC);
            failure.message += blockedHint;
        }
        saveGame();
        restart();
        m_sites->publish(zip);
        press();
        shows(failure);
        QCOMPARE(snapshotOf(outside()).size(), 1);
        press();
        shows(failure);
        nothingChanged();
        m_model->reset();
        nextPressPlays();

        // As an update it must not take the place of one that plays.
        m_sites->publish(zip, "v148");
        update();
        m_model->play();
        QVERIFY(comesToRest());
        shows(failure);
        QVERIFY(!fs::exists(Paths::aresOld()));
        m_sites->mend();
        pressPlays();
        QCOMPARE(installedTag(), QByteArray("v147"));
    }
};

QTEST_GUILESS_MAIN(FaultsDamageTest)
#include "tst_FaultsDamage.moc"
