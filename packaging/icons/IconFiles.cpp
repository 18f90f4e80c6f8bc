// SPDX-License-Identifier: MIT
#include "IconFiles.h"

#include <QBuffer>
#include <QPainter>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <stdexcept>

namespace cartloom::IconFiles
{

namespace
{

/// How much of the square's side is free at each of the longer drawing's ends.
constexpr qreal margin = 0.04;

/// The part of the drawing's plane that the icon shows.
QRectF frameOf(const Drawing& drawing)
{
    const QRectF bounds = drawing.bounds();
    const qreal side = std::max(bounds.width(), bounds.height()) / (1 - 2 * margin);
    QRectF frame(0, 0, side, side);
    frame.moveCenter(bounds.center());
    return frame;
}

QByteArray png(const QImage& picture)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!buffer.open(QBuffer::WriteOnly) || !picture.save(&buffer, "PNG"))
        throw std::runtime_error("a picture cannot be written as PNG");
    return bytes;
}

QByteArray decimal(qreal value)
{
    QByteArray text = QByteArray::number(value, 'f', 3);
    while (text.endsWith('0'))
        text.chop(1);
    if (text.endsWith('.'))
        text.chop(1);
    return text == "-0" ? "0" : text;
}

QByteArray pair(const QPointF& point)
{
    return decimal(point.x()) + ' ' + decimal(point.y());
}

QByteArray pathData(const QPainterPath& path)
{
    QByteArray data;
    for (int i = 0; i < path.elementCount(); ++i) {
        const auto& element = path.elementAt(i);
        switch (element.type) {
        case QPainterPath::MoveToElement:
            data += 'M' + pair(element);
            break;
        case QPainterPath::LineToElement:
            data += 'L' + pair(element);
            break;
        case QPainterPath::CurveToElement:
            data += 'C' + pair(element);
            break;
        case QPainterPath::CurveToDataElement:
            data += ' ' + pair(element);
            break;
        }
    }
    return data + 'Z';
}

QByteArray gradientElement(const QLinearGradient& gradient, const QByteArray& id)
{
    const QPointF from = gradient.start();
    const QPointF to = gradient.finalStop();
    QByteArray element = "  <linearGradient id=\"" + id + R"(" gradientUnits="userSpaceOnUse" x1=")" +
                         decimal(from.x()) + "\" y1=\"" + decimal(from.y()) + "\" x2=\"" + decimal(to.x()) +
                         "\" y2=\"" + decimal(to.y()) + "\">\n";
    const auto stops = gradient.stops();
    for (const auto& [position, colour] : stops)
        element += "    <stop offset=\"" + decimal(position) + "\" stop-color=\"" + colour.name().toLatin1() +
                   "\"/>\n";
    return element + "  </linearGradient>\n";
}

} // namespace

QImage picture(const Drawing& drawing, int side)
{
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    const QRectF frame = frameOf(drawing);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(side / frame.width(), side / frame.height());
    painter.translate(-frame.topLeft());
    for (const DrawnShape& shape : drawing.shapes) {
        painter.setPen(shape.stroke);
        painter.setBrush(shape.fill);
        painter.drawPath(shape.outline);
    }
    return image;
}

QByteArray svg(const Drawing& drawing)
{
    const QRectF frame = frameOf(drawing);
    QByteArray gradients;
    QByteArray paths;
    int gradientCount = 0;
    for (const DrawnShape& shape : drawing.shapes) {
        QByteArray fill = shape.fill.color().name().toLatin1();
        if (const QGradient* gradient = shape.fill.gradient()) {
            const QByteArray id = "g" + QByteArray::number(++gradientCount);
            gradients += gradientElement(*static_cast<const QLinearGradient*>(gradient), id);
            fill = "url(#" + id + ")";
        }
        paths += "  <path fill=\"" + fill + "\" d=\"" + pathData(shape.outline) + "\"";
        if (shape.stroke.style() != Qt::NoPen)
            paths += " stroke=\"" + shape.stroke.color().name().toLatin1() + "\" stroke-width=\"" +
                     decimal(shape.stroke.widthF()) + R"(" stroke-linejoin="round")";
        paths += "/>\n";
    }
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!-- SPDX-License-Identifier: MIT -->\n"
           "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"128\" height=\"128\" viewBox=\"" +
           pair(frame.topLeft()) + ' ' + decimal(frame.width()) + ' ' + decimal(frame.height()) + "\">\n" +
           gradients + paths + "</svg>\n";
}

QByteArray icns(const Drawing& drawing)
{
    struct Entry
    {
        const char* type;
        int side;
    };
    // The second of two entries of one size is for screens with four dots for each point.
    constexpr std::array<Entry, 10> entries{{{"icp4", 16},
                                             {"icp5", 32},
                                             {"ic11", 32},
                                             {"ic12", 64},
                                             {"ic07", 128},
                                             {"ic13", 256},
                                             {"ic08", 256},
                                             {"ic14", 512},
                                             {"ic09", 512},
                                             {"ic10", 1024}}};
    const auto block = [](const QByteArray& type, const QByteArray& content) {
        QByteArray size(4, '\0');
        qToBigEndian(static_cast<quint32>(content.size() + 8), size.data());
        return type + size + content;
    };
    QByteArray content;
    for (const Entry& entry : entries)
        content += block(entry.type, png(picture(drawing, entry.side)));
    return block("icns", content);
}

} // namespace cartloom::IconFiles
