// SPDX-License-Identifier: MIT
#include "core/Paths.h"
#include "platform/Text.h"
#include "support/FaultTest.h"
#include "support/SmallVolumeTest.h"
#include "support/ZipWriter.h"

#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;

namespace
{

constexpr long long plenty = 64 * 1024 * 1024;
const auto full = QStringLiteral("Your disk is full. Free some space and try again.");

} // namespace

/// The storage folder on a volume that is really full, and on one that is not the home's.
class FaultsFullDiskTest : public FaultTest
{
    Q_OBJECT

    std::optional<SmallVolume> m_volume;

    /// Room for every amount between too little for anything and enough for all.
    static void addRows(const char* fault, int from, int to, int step)
    {
        QTest::addColumn<int>("kilobytes");
        QTest::addColumn<bool>("isEnough");
        for (int kilobytes = from; kilobytes < to; kilobytes += step)
            QTest::addRow("49 %s: room for %d KiB", fault, kilobytes) << kilobytes << false;
        QTest::addRow("49 %s: room enough", fault) << static_cast<int>(plenty / 1024) << true;
    }

    /// What the emulator of the sites takes when it is unpacked, in KiB. Its archive comes on top of that.
    static int unpacked() { return static_cast<int>(fs::file_size(SCRIPTED_CHILD) / 1024); }

    void fill() const
    {
        QFETCH(const int, kilobytes);
        m_volume->leaveRoomFor(kilobytes * 1024LL);
    }

    /// Whether it failed; checks that it did so because the disk was full, and changed nothing.
    bool failed(const char* step, bool ofTheGameDownload = false)
    {
        if (message() != full)
            return false;
        const auto details = m_model->errorDetails();
        const auto ours =
            QLatin1String(step) + QStringLiteral("\nNSPOSIXErrorDomain 28\nNo space left on device");
        const bool toolSaysSo = details.contains(QStringLiteral("No space left on device"));
        [&] { QVERIFY2(details == ours || toolSaysSo, qPrintable(details)); }();
        shows({full, details}, ofTheGameDownload);
        nothingChanged();
        return true;
    }

    void failsUnlessThereIsEnough(bool hasFailed)
    {
        QFETCH(const bool, isEnough);
        QVERIFY2(!isEnough || !hasFailed, "there was enough room");
        QVERIFY2(isEnough || hasFailed, "there was too little room");
        m_volume->leaveRoomFor(plenty);
    }

private Q_SLOTS:
    void init()
    {
        FaultTest::init();
        fs::create_directories(Paths::support());
        m_volume.emplace(Paths::support(), plenty);
    }

    void cleanup()
    {
        m_recorder.reset();
        m_model.reset();
        m_volume.reset();
        FaultTest::cleanup();
    }

    void theFirstInstallation_data() { addRows("first installation", 0, unpacked(), unpacked() / 12); }

    void theFirstInstallation()
    {
        saveGame();
        restart();
        fill();
        press();
        failsUnlessThereIsEnough(failed("Getting Ares"));
        nextPressPlays();
    }

    void anUpdate_data() { addRows("update", 0, unpacked(), unpacked() / 6); }

    void anUpdate()
    {
        installAres();
        saveGame();
        restart();
        fill();
        update();
        const bool hasFailed = failed("Updating Ares");
        failsUnlessThereIsEnough(hasFailed);
        QCOMPARE(installedTag(), hasFailed ? QByteArray("v146") : QByteArray("v147"));
        if (hasFailed)
            pressPlays();
    }

    void theGame_data() { addRows("game's download", 0, 9'700, 1'200); }

    void theGame()
    {
        installAres();
        restart();
        fill();
        press();
        failsUnlessThereIsEnough(failed("Getting the game", true));
        nextPressPlays();
    }

    void anImport_data() { addRows("import", 0, 9'700, 2'400); }

    void anImport()
    {
        installAres();
        restart();
        const auto source = m_sandbox->scratch() / "source.z64";
        writeSparse(source, bigEndianHeader, 10'000'000);
        fill();
        remember();
        chooseGameFile(source);
        const bool hasFailed = failed("Adding the game file");
        failsUnlessThereIsEnough(hasFailed);
        if (hasFailed)
            chooseGameFile(source);
        QCOMPARE(m_model->notice(), QStringLiteral("Game file added. Press the button to play."));
        pressPlays();
    }

    void anImportOverTheSavedGame_data() { addOnlyRow("49 import over the saved game: no room"); }

    /// The saved game makes room for the new one before that is there; the next press fetches it again.
    void anImportOverTheSavedGame()
    {
        installAres();
        saveGame();
        restart();
        const auto source = m_sandbox->scratch() / "source.z64";
        writeSparse(source, bigEndianHeader, 10'000'000);
        m_volume->leaveRoomFor(0);
        chooseGameFile(source);
        shows({full, QStringLiteral("Adding the game file\nNSPOSIXErrorDomain 28\nNo space left on device")});
        QCOMPARE(Sandbox::storage(),
                 (QStringList{QStringLiteral("Ares"), QStringLiteral("ares-version.txt")}));
        m_volume->leaveRoomFor(plenty);
        nextPressPlays();
    }

    void noFurtherEntry_data()
    {
        QTest::addColumn<int>("entries");
        for (int entries = 0; entries < 9; ++entries)
            QTest::addRow("49 room for %d further files", entries) << entries;
    }

    /// The tag is the last that is written, and is done without.
    void noFurtherEntry()
    {
        QFETCH(const int, entries);
        saveGame();
        restart();
        m_volume->leaveRoomFor(plenty, entries);
        press();
        if (!failed("Getting Ares"))
            QCOMPARE(m_recorder->stages().last(2), QStringLiteral("playing idle").split(u' '));
        m_volume->leaveRoomFor(plenty);
        nextPressPlays();
    }

    void aBomb_data() { addOnlyRow("42 a bomb of 4 GB"); }

    void aBomb()
    {
        constexpr quint32 size = 64 * 1024 * 1024;
        std::vector<ZipEntry> entries{zipProgram()};
        for (ZipEntry zeros = zipZeros({}, size); entries.size() < 65; entries.push_back(zeros))
            zeros.name = "ares.app/" + QByteArray::number(entries.size());
        saveGame();
        restart();
        const auto before = m_volume->used();
        m_sites->publish(zipOf(entries));
        press();
        QVERIFY(failed("Getting Ares"));
        QCOMPARE(m_volume->used(), before);
        nextPressPlays();
    }

    void tooManyFiles_data() { addOnlyRow("42 a bomb of 200,001 files"); }

    void tooManyFiles()
    {
        std::vector<ZipEntry> entries{zipProgram()};
        for (int i = 0; i < 200'001; ++i)
            entries.push_back({"ares.app/" + QByteArray::number(i)});
        saveGame();
        restart();
        m_volume->leaveRoomFor(16 * plenty);
        const auto before = m_volume->used();
        m_sites->publish(zipOf(entries));
        press();
        QVERIFY2(m_model->errorDetails().endsWith(QStringLiteral(": too many files")),
                 qPrintable(m_model->errorDetails()));
        shows(
            {QStringLiteral("Could not unpack Ares. The download may be damaged."), m_model->errorDetails()});
        nothingChanged();
        QCOMPARE(m_volume->used(), before);
        nextPressPlays();
    }

    void aLinkToAnotherVolume_data() { addOnlyRow("54 the storage folder is a link to another volume"); }

    void aLinkToAnotherVolume()
    {
        m_volume.reset();
        const auto volume = m_sandbox->scratch() / "volume";
        fs::create_directories(volume);
        m_volume.emplace(volume, plenty);
        fs::remove(Paths::support());
        fs::create_directories(volume / "storage");
        fs::create_symlink(volume / "storage", Paths::support());
        pressPlays();
        m_sites->publish(zipOf({zipProgram(), {"ares.app/tag", "v148"}}), "v148");
        update();
        QCOMPARE(installedTag(), QByteArray("v148"));
        m_model->play();
        QVERIFY(goesThrough(AppModel::Stage::playing));
        QVERIFY2(message().endsWith(QStringLiteral("so the previous version was put back.")),
                 qPrintable(message()));
        QCOMPARE(installedTag(), QByteArray("v147"));
        QVERIFY(fs::is_symlink(Paths::support()));
        m_model->reset();
        QCOMPARE(Sandbox::storage(), QStringList());
        QVERIFY(fs::is_empty(volume / "storage"));
    }
};

int main(int argc, char** argv)
{
    return runWithSmallVolumes<FaultsFullDiskTest>(argc, argv);
}

#include "tst_FaultsFullDisk.moc"
