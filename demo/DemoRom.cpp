// SPDX-License-Identifier: MIT
#include "DemoRom.h"

#include "BootCode.h"

#include <QtEndian>

#include <array>

namespace cartloom::DemoRom
{

namespace
{

/// Byte order and bus timing, clock rate, where the console's memory starts, and the version of the library.
constexpr std::array<quint32, 4> headerStart{0x80371240, 0x0000000F, 0x80000400, 0x00001444};
constexpr qsizetype titleOffset = 0x20;
constexpr qsizetype titleLength = 20;
constexpr qsizetype codeNameOffset = 0x3B;
constexpr auto codeName = "NQLE";
constexpr qsizetype bootCodeOffset = 0x40;

template <typename T>
void put(QByteArray& image, qsizetype offset, T number)
{
    qToBigEndian(number, image.data() + offset);
}

quint16 toPixel(QRgb colour)
{
    const auto fiveBits = [](int eightBits) { return static_cast<unsigned>(eightBits) >> 3; };
    return static_cast<quint16>(fiveBits(qRed(colour)) << 11 | fiveBits(qGreen(colour)) << 6 |
                                fiveBits(qBlue(colour)) << 1 | 1U);
}

QRgb toColour(quint16 pixel)
{
    const auto eightBits = [pixel](int shift) { return (pixel >> shift & 0x1F) << 3; };
    return qRgb(eightBits(11), eightBits(6), eightBits(1));
}

qsizetype pixelOffset(int x, int y)
{
    return qsizetype(pictureOffset) + (qsizetype(y) * pictureWidth + x) * 2;
}

} // namespace

QByteArray make(const QString& title, const QImage& picture, qsizetype size)
{
    QByteArray image(size, '\0');
    for (qsizetype offset = 0; const quint32 word : headerStart) {
        put(image, offset, word);
        offset += 4;
    }
    image.replace(titleOffset, titleLength, title.toLatin1().leftJustified(titleLength, ' ', true));
    image.replace(codeNameOffset, 4, codeName, 4);
    for (qsizetype offset = bootCodeOffset; const quint32 instruction : bootCode()) {
        put(image, offset, instruction);
        offset += 4;
    }
    for (int y = 0; y < pictureHeight; ++y) {
        for (int x = 0; x < pictureWidth; ++x)
            put(image, pixelOffset(x, y), toPixel(picture.pixel(x, y)));
    }
    return image;
}

QString title(const QByteArray& image)
{
    return QString::fromLatin1(image.mid(titleOffset, titleLength)).trimmed();
}

QImage picture(const QByteArray& image)
{
    if (image.size() < qsizetype(pictureOffset) + qsizetype(pictureBytes))
        return {};
    QImage picture(pictureWidth, pictureHeight, QImage::Format_RGB32);
    for (int y = 0; y < pictureHeight; ++y) {
        for (int x = 0; x < pictureWidth; ++x)
            picture.setPixel(x, y, toColour(qFromBigEndian<quint16>(image.constData() + pixelOffset(x, y))));
    }
    return picture;
}

} // namespace cartloom::DemoRom
