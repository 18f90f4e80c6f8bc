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

private Q_SLOTS:
    void unpackedBytesAreFreedAgain_data() { addOnlyRow("42 a bomb of 4 GB"); }

    void unpackedBytesAreFreedAgain()
    {
        constexpr quint32 size = 64 * 1024 * 1024;
        std::vector<ZipEntry> entries{zipProgram()};
        for (ZipEntry zeros = zipZeros({}, size); entries.size() < 65; entries.push_back(zeros))
            zeros.name = "ares.app/" + QByteArray::number(entries.size());
        saveGame();
        restart();
        const auto before = m_volume->used();
        m_sites->publish(zipOf(entries));
        CHECKED(press());
        CHECKED(QVERIFY(failed("Getting Ares")));
        QCOMPARE(m_volume->used(), before);
        nextPressPlays();
    }

    void tooManyUnpackedFilesAreRefused_data() { addOnlyRow("42 a bomb of 200,001 files"); }

    void tooManyUnpackedFilesAreRefused()
    {
        std::vector<ZipEntry> entries{zipProgram()};
        for (int i = 0; i < 200'001; ++i)
            entries.push_back({"ares.app/" + QByteArray::number(i)});
        saveGame();
        restart();
        m_volume->leaveRoomFor(16 * plenty);
        const auto before = m_volume->used();
        m_sites->publish(zipOf(entries));
        CHECKED(press());
        QVERIFY2(m_model->errorDetails().endsWith(QStringLiteral(": too many files")),
                 qPrintable(m_model->errorDetails()));
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
