// SPDX-License-Identifier: MIT
#include "TitlePicture.h"

#include "BootCode.h"

#include <QFont>
#include <QLinearGradient>
#include <QPainter>
#include <QPolygonF>

#include <cstdlib>

namespace cartloom
{

namespace
{

const QColor green(0x30, 0xD1, 0x58);
const QColor yellow(0xFF, 0xD6, 0x0A);
const QColor grey(0x98, 0x98, 0x9D);

/// A rectangle of a size around a centre.
QRectF around(double x, double y, double width, double height)
{
    return {x - width / 2, y - height / 2, width, height};
}

QPolygonF bolt()
{
    return QPolygonF{{{2, -8}, {-5, 2}, {-1, 2}, {-2, 8}, {5, -2}, {1, -2}}};
}

/// The robot around the origin, 110 by 130; layer by layer from the back.
void drawRobot(QPainter& painter)
{
    painter.setPen(Qt::NoPen);
    painter.fillRect(around(0, -52, 4, 14), grey);
    painter.setBrush(yellow);
    painter.drawEllipse(around(0, -60, 10, 10));

    QLinearGradient shade(0, -40, 0, 40);
    shade.setColorAt(0, QColor::fromRgbF(0.75F, 0.75F, 0.75F));
    shade.setColorAt(1, QColor::fromRgbF(0.5F, 0.5F, 0.5F));
    painter.setBrush(shade);
    painter.drawRoundedRect(around(0, 0, 90, 80), 22, 22);

    painter.setBrush(QColor::fromRgbF(0.12F, 0.12F, 0.12F));
    painter.drawRoundedRect(around(0, -6, 70, 36), 14, 14);
    painter.setBrush(green);
    for (const double x : {-16.0, 16.0})
        painter.drawEllipse(around(x, -6, 14, 14));
    painter.setBrush(yellow);
    painter.drawPolygon(bolt().translated(0, 25));
}

void drawTitle(QPainter& painter)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(40);
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(QRectF(0, 170, pictureWidth, 50), Qt::AlignCenter, QStringLiteral("Quillet!64"));
}

/// A console has 32 steps of each colour, and an emulator may blend them.
bool isNearly(QRgb pixel, const QColor& colour)
{
    constexpr int tolerance = 12;
    return std::abs(qRed(pixel) - colour.red()) <= tolerance &&
           std::abs(qGreen(pixel) - colour.green()) <= tolerance &&
           std::abs(qBlue(pixel) - colour.blue()) <= tolerance;
}

} // namespace

QImage titlePicture()
{
    QImage picture(pictureWidth, pictureHeight, QImage::Format_RGB32);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient sky(0, 0, 0, pictureHeight);
    sky.setColorAt(0, QColor(0x1B, 0x2A, 0x5C));
    sky.setColorAt(1, QColor(0x3C, 0x1D, 0x52));
    painter.fillRect(picture.rect(), sky);
    drawTitle(painter);
    painter.translate(pictureWidth / 2.0, 104);
    painter.scale(1.2, 1.2);
    drawRobot(painter);
    return picture;
}

bool showsRobot(const QImage& picture)
{
    // In the picture's own size the eyes take more than 400 points, and the tip and the bolt more than 150.
    constexpr int fewestGreen = 300;
    constexpr int fewestYellow = 100;
    int greenPoints = 0;
    int yellowPoints = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            greenPoints += isNearly(picture.pixel(x, y), green) ? 1 : 0;
            yellowPoints += isNearly(picture.pixel(x, y), yellow) ? 1 : 0;
        }
    }
    return greenPoints >= fewestGreen && yellowPoints >= fewestYellow;
}

} // namespace cartloom
