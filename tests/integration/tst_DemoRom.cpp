// SPDX-License-Identifier: MIT
#include "BootCode.h"
#include "DemoRom.h"
#include "TitlePicture.h"
#include "game/RomCheck.h"
#include "support/Sandbox.h"

#include <QtTest>

#include <cstdlib>

using namespace cartloom;

namespace
{

constexpr qsizetype size = 16'000'000;

QByteArray makeRom()
{
    return DemoRom::make(QStringLiteral("QUILLET!64"), titlePicture(), size);
}

int difference(QRgb left, QRgb right)
{
    return std::max({std::abs(qRed(left) - qRed(right)), std::abs(qGreen(left) - qGreen(right)),
                     std::abs(qBlue(left) - qBlue(right))});
}

} // namespace

class DemoRomTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void headerIsThatOfABigEndianImage()
    {
        const QByteArray rom = makeRom();
        QCOMPARE(rom.size(), size);
        QCOMPARE(rom.left(16).toHex(), QByteArray("803712400000000f8000040000001444"));
        QCOMPARE(rom.mid(0x20, 20), QByteArray("QUILLET!64          "));
        QCOMPARE(DemoRom::title(rom), QStringLiteral("QUILLET!64"));
    }

    void aTitleThatIsTooLongIsCut()
    {
        const auto rom = DemoRom::make(QStringLiteral("A TITLE OF MORE THAN TWENTY"), titlePicture(), size);
        QCOMPARE(DemoRom::title(rom), QStringLiteral("A TITLE OF MORE THAN"));
    }

    void theLauncherTakesItForItsGame()
    {
        const Sandbox sandbox;
        const auto file = sandbox.scratch() / "game.z64";
        writeFile(file, makeRom());
        RomCheck::validate(file, true);
    }

    void bootCodeWaitsForTheCartridgeAndFillsItsPlaceAtMost()
    {
        const QByteArray rom = makeRom();
        // lui t0, 0xA460; ori; lw t1, 0x10(t0); andi t1, t1, 3; bne t1, zero, back; nop
        QCOMPARE(rom.mid(0x40, 24).toHex(), QByteArray("3c08a460350800008d090010312900031520fffd00000000"));
        QVERIFY(bootCode().size() * 4 <= pictureOffset - 0x40);
    }

    void bootCodeEndsInALoopOnItself()
    {
        const auto code = bootCode();
        QCOMPARE(code.at(code.size() - 2), 0x1000FFFFU);
        QCOMPARE(code.back(), 0U);
    }

    void thePictureComesBackWithTheColoursOfTheConsole()
    {
        const QImage drawn = titlePicture();
        const QImage stored = DemoRom::picture(makeRom());
        QCOMPARE(stored.size(), QSize(320, 240));
        for (int y = 0; y < stored.height(); ++y) {
            for (int x = 0; x < stored.width(); ++x)
                QVERIFY(difference(drawn.pixel(x, y), stored.pixel(x, y)) < 8);
        }
    }

    void theRobotIsSeenInThePictureInAnySizeAndNotInAnother()
    {
        const QImage picture = titlePicture();
        QVERIFY(showsRobot(picture));
        QVERIFY(showsRobot(DemoRom::picture(makeRom())));
        QVERIFY(showsRobot(picture.scaled(750, 568)));
        QImage black(640, 480, QImage::Format_RGB32);
        black.fill(Qt::black);
        QVERIFY(!showsRobot(black));
    }

    void anImageWithoutRoomForAPictureHasNone() { QVERIFY(DemoRom::picture(makeRom().left(5000)).isNull()); }
};

QTEST_MAIN(DemoRomTest)
#include "tst_DemoRom.moc"
