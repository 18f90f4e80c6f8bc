// SPDX-License-Identifier: MIT
#include "support/Checked.h"
#include "support/SmallVolumeTest.h"
#include "support/ZipWriter.h"

#include <QtTest>

using namespace cartloom;

/// Small archives that unpack to more than there is room for, or more than is accepted.
class ArchiveBombTest : public SmallVolumeTest
{
    Q_OBJECT

    /// Files of 64 MiB each.
    static std::vector<ZipEntry> bomb(std::size_t files)
    {
        std::vector<ZipEntry> entries;
        for (ZipEntry zeros = zipZeros({}, 64 * 1024 * 1024); entries.size() < files;
             entries.push_back(zeros))
            zeros.name = "ares.app/" + QByteArray::number(entries.size());
        return entries;
    }

private Q_SLOTS:
    void unpackedBytesAreFreedAgain_data() { addOnlyRow("42 a bomb of 2 GB"); }

    void unpackedBytesAreFreedAgain()
    {
        saveGame();
        restart();
        const auto before = m_volume->used();
        m_sites->publish(zipOf(bomb(32)));
        CHECKED(press());
        CHECKED(QVERIFY(failed("Getting Ares")));
        QCOMPARE(m_volume->used(), before);
        nextPressPlays();
    }

    void misleadingNameHidesNoFullDisk_data()
    {
        addOnlyRow("92 a full disk, and an entry that says no space");
    }

    void misleadingNameHidesNoFullDisk()
    {
        auto entries = bomb(32);
        entries.insert(entries.begin(), {"ares.app/no space"});
        saveGame();
        restart();
        m_sites->publish(zipOf(entries));
        CHECKED(press());
        CHECKED(QVERIFY(failed("Getting Ares")));
        nextPressPlays();
    }

    void tooMuchIsRefused_data()
    {
        QTest::addColumn<std::vector<ZipEntry>>("entries");
        QTest::addColumn<QString>("reason");
        std::vector<ZipEntry> files;
        for (int i = 0; i < 200'001; ++i)
            files.push_back({"ares.app/" + QByteArray::number(i)});
        auto lies = bomb(64);
        for (auto& entry : lies)
            entry.announcedSize = 10;
        QTest::newRow("42 a bomb of 200,001 files") << files << QStringLiteral(": too many files");
        QTest::newRow("79 a bomb of 4 GB") << bomb(64) << QStringLiteral(": too many bytes");
        QTest::newRow("79 a bomb of 4 GB that announces 640 bytes")
            << lies << QStringLiteral(": too many bytes");
    }

    void tooMuchIsRefused()
    {
        QFETCH(std::vector<ZipEntry>, entries);
        QFETCH(const QString, reason);
        entries.push_back(zipProgram());
        saveGame();
        restart();
        m_volume->leaveRoomFor(80 * plenty);
        const auto before = m_volume->used();
        m_sites->publish(zipOf(entries));
        CHECKED(press());
        QVERIFY2(m_model->errorDetails().endsWith(reason), qPrintable(m_model->errorDetails()));
        CHECKED(shows({QStringLiteral("Could not unpack Ares. The download may be damaged."),
                       m_model->errorDetails()}));
        CHECKED(nothingChanged());
        QCOMPARE(m_volume->used(), before);
        nextPressPlays();
    }
};

int main(int argc, char** argv)
{
    return runWithSmallVolumes<ArchiveBombTest>(argc, argv);
}

#include "tst_ArchiveBomb.moc"
