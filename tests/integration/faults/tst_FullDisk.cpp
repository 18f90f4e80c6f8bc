// SPDX-License-Identifier: MIT
#include "platform/Files.h"
#include "storage/Paths.h"
#include "storage/WholeFiles.h"
#include "support/Checked.h"
#include "support/Failures.h"
#include "support/SmallVolumeTest.h"
#include "support/ZipWriter.h"

#include <QtTest>

namespace fs = std::filesystem;
using namespace cartloom;

/// Every writer on a full disk.
class FullDiskTest : public SmallVolumeTest
{
    Q_OBJECT

    /// Rows with too little room for the operation, and one with enough.
    static void addRows(const char* fault, int to, int step)
    {
        QTest::addColumn<int>("kilobytes");
        QTest::addColumn<bool>("isEnough");
        for (int kilobytes = 0; kilobytes < to; kilobytes += step)
            QTest::addRow("49 %s: room for %d KiB", fault, kilobytes) << kilobytes << false;
        QTest::addRow("49 %s: room enough", fault) << static_cast<int>(plenty / 1024) << true;
    }

    /// The size of the unpacked emulator in KiB, without its archive.
    static int unpacked() { return static_cast<int>(fs::file_size(SCRIPTED_CHILD) / 1024); }

    void fill() const
    {
        QFETCH(const int, kilobytes);
        m_volume->leaveRoomFor(kilobytes * 1024LL);
    }

    void failsForLackOfRoomOnly(bool hasFailed)
    {
        QFETCH(const bool, isEnough);
        QVERIFY2(!isEnough || !hasFailed, "there was enough room");
        QVERIFY2(isEnough || hasFailed, "there was too little room");
        m_volume->leaveRoomFor(plenty);
    }

private Q_SLOTS:
    void firstInstallationFailsWithoutATrace_data()
    {
        addRows("first installation", unpacked(), unpacked() / 12);
    }

    void firstInstallationFailsWithoutATrace()
    {
        saveGame();
        restart();
        fill();
        CHECKED(press());
        CHECKED(failsForLackOfRoomOnly(failed("Getting Ares")));
        nextPressPlays();
    }

    void updateKeepsTheInstalledCopy_data() { addRows("update", unpacked(), unpacked() / 6); }

    void updateKeepsTheInstalledCopy()
    {
        installAres();
        saveGame();
        restart();
        fill();
        CHECKED(update());
        const bool hasFailed = failed("Updating Ares");
        CHECKED(failsForLackOfRoomOnly(hasFailed));
        QCOMPARE(installedTag(), hasFailed ? QByteArray("v146") : QByteArray("v147"));
        if (hasFailed)
            pressPlays();
    }

    void gameDownloadFailsWithoutATrace_data() { addRows("game's download", 9'700, 1'200); }

    void gameDownloadFailsWithoutATrace()
    {
        installAres();
        restart();
        fill();
        CHECKED(press());
        CHECKED(failsForLackOfRoomOnly(failed("Getting the game", true)));
        nextPressPlays();
    }

    void importFailsWithoutATrace_data() { addRows("import", 9'700, 2'400); }

    void importFailsWithoutATrace()
    {
        installAres();
        restart();
        const auto source = m_sandbox->scratch() / "source.z64";
        writeSparse(source, bigEndianHeader, 10'000'000);
        fill();
        remember();
        chooseGameFile(source);
        const bool hasFailed = failed("Adding the game file");
        CHECKED(failsForLackOfRoomOnly(hasFailed));
        if (hasFailed)
            chooseGameFile(source);
        QCOMPARE(m_model->notice(), QStringLiteral("Game file added. Press the button to play."));
        pressPlays();
    }

    void importOverTheSavedGameLeavesNone_data() { addOnlyRow("49 import over the saved game: no room"); }

    /// The saved game is deleted before the copy begins; the next press fetches it again.
    void importOverTheSavedGameLeavesNone()
    {
        installAres();
        saveGame();
        restart();
        const auto source = m_sandbox->scratch() / "source.z64";
        writeSparse(source, bigEndianHeader, 10'000'000);
        m_volume->leaveRoomFor(0);
        chooseGameFile(source);
        CHECKED(shows({full, systemFailure(QStringLiteral("Adding the game file"), ENOSPC).details}));
        QCOMPARE(Sandbox::storage(),
                 (QStringList{QStringLiteral("Ares"), QStringLiteral("ares-version.txt")}));
        m_volume->leaveRoomFor(plenty);
        nextPressPlays();
    }

    void volumeWithoutFreeInodesIsAFullDisk_data()
    {
        QTest::addColumn<int>("entries");
        for (int entries = 0; entries < 9; ++entries)
            QTest::addRow("49 room for %d further files", entries) << entries;
    }

    /// The tag is written last, and the installation works without it.
    void volumeWithoutFreeInodesIsAFullDisk()
    {
        QFETCH(const int, entries);
        saveGame();
        restart();
        m_volume->leaveRoomFor(plenty, entries);
        CHECKED(press());
        if (!failed("Getting Ares"))
            QCOMPARE(m_recorder->stages().last(2), QStringLiteral("playing idle").split(u' '));
        m_volume->leaveRoomFor(plenty);
        nextPressPlays();
    }

    void storageFolderMayLinkToAnotherVolume_data()
    {
        addOnlyRow("54 the storage folder is a link to another volume");
    }

    void storageFolderMayLinkToAnotherVolume()
    {
        m_volume.reset();
        const auto volume = m_sandbox->scratch() / "volume";
        fs::create_directories(volume);
        m_volume.emplace(volume, plenty);
        fs::remove(Paths::support());
        fs::create_directories(volume / "storage");
        fs::create_symlink(volume / "storage", Paths::support());
        CHECKED(pressPlays());
        m_sites->publish(zipOf({zipProgram(), {"ares.app/tag", "v148"}}), "v148");
        CHECKED(update());
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

    void fullDiskEndsTheTransfer_data() { addOnlyRow("49 download of 64 MB: room for 256 KiB"); }

    void fullDiskEndsTheTransfer()
    {
        installAres();
        restart();
        m_sites->scripts[ScriptedSites::game] = [](RawConnection& connection, const RawRequest&) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 64000000\r\n\r\n");
            connection.sendEndlessly(QByteArray(64'000, 'x'), 64'000'000);
        };
        m_volume->leaveRoomFor(256 * 1024);
        CHECKED(press());
        CHECKED(QVERIFY(failed("Getting the game", true)));
        QVERIFY(m_sites->lastConnection().sent() < 32'000'000);
        m_volume->leaveRoomFor(plenty);
        nextPressPlays();
    }

    void failedWriteKeepsTheFile()
    {
        writeFile(Paths::aresVersion(), "v1");
        m_volume->leaveRoomFor(0);
        QCOMPARE(errnoOf([] { WholeFiles::write(Paths::aresVersion(), QByteArray(1'000'000, 'x')); }),
                 ENOSPC);
        QCOMPARE(readFile(Paths::aresVersion()), QByteArray("v1"));
        QCOMPARE(Sandbox::storage(), QStringList{QStringLiteral("ares-version.txt")});
    }

    void moveToAnotherVolumeIsRefused()
    {
        const auto source = m_sandbox->scratch() / "source";
        writeFile(source, "x");
        QCOMPARE(errnoOf([&] { Files::move(source, Paths::gameFile()); }), EXDEV);
        QVERIFY(fs::exists(source));
        QCOMPARE(Sandbox::storage(), QStringList());
    }

    void resetDeletesWhatCanBeDeleted()
    {
        installAres();
        saveGame();
        for (const auto& folder : {Paths::aresOld(), Paths::aresNew()})
            fs::create_directories(folder);
        fs::remove_all(Paths::ares() / "ares.app");
        // The mount point cannot be removed.
        const SmallVolume inUse(Paths::ares(), 4096);
        restart();
        m_model->reset();
        QVERIFY(!m_model->hasWorkUnderWay());
        QCOMPARE(Sandbox::storage(), QStringList{QStringLiteral("Ares")});
        QCOMPARE(m_model->notice(),
                 QStringLiteral("Everything was deleted. The next click downloads it again."));
    }
};

int main(int argc, char** argv)
{
    return runWithSmallVolumes<FullDiskTest>(argc, argv);
}

#include "tst_FullDisk.moc"
