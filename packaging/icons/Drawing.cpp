// SPDX-License-Identifier: MIT
#include "Drawing.h"

#include <QQmlListReference>

#include <stdexcept>

namespace cartloom
{

namespace
{

/// What QML calls the object's type; its classes are not public in C++.
bool isA(const QObject& object, const char* type)
{
    return object.inherits(type);
}

[[noreturn]] void failFor(const QObject& object)
{
    throw std::runtime_error(std::string("no icon can be drawn from a ") + object.metaObject()->className());
}

qreal number(const QObject& object, const char* name)
{
    const QVariant value = object.property(name);
    if (!value.isValid())
        failFor(object);
    return value.toReal();
}

QPointF point(const QObject& object, const char* x, const char* y)
{
    return {number(object, x), number(object, y)};
}

QColor colour(const QObject& object, const char* name)
{
    return object.property(name).value<QColor>();
}

void append(const QObject& element, QPainterPath& outline)
{
    if (isA(element, "QQuickPathLine")) {
        outline.lineTo(point(element, "x", "y"));
    } else if (isA(element, "QQuickPathCubic")) {
        outline.cubicTo(point(element, "control1X", "control1Y"), point(element, "control2X", "control2Y"),
                        point(element, "x", "y"));
    } else if (isA(element, "QQuickPathPolyline")) {
        const auto corners = element.property("path").toList();
        for (const QVariant& corner : corners)
            outline.lineTo(corner.toPointF());
    } else {
        failFor(element);
    }
}

QPainterPath outlineOf(QObject& shapePath)
{
    QPainterPath outline(point(shapePath, "startX", "startY"));
    const QQmlListReference elements(&shapePath, "pathElements");
    for (qsizetype i = 0; i < elements.count(); ++i)
        append(*elements.at(i), outline);
    outline.closeSubpath();
    return outline;
}

QBrush gradientBrush(QObject& gradient, const QPointF& origin)
{
    if (!isA(gradient, "QQuickShapeLinearGradient"))
        failFor(gradient);
    QLinearGradient result(origin + point(gradient, "x1", "y1"), origin + point(gradient, "x2", "y2"));
    const QQmlListReference stops(&gradient, "stops");
    for (qsizetype i = 0; i < stops.count(); ++i)
        result.setColorAt(number(*stops.at(i), "position"), colour(*stops.at(i), "color"));
    return result;
}

DrawnShape shapeOf(QObject& shapePath, const QPointF& origin)
{
    DrawnShape shape{outlineOf(shapePath).translated(origin), colour(shapePath, "fillColor")};
    if (auto* const gradient = shapePath.property("fillGradient").value<QObject*>())
        shape.fill = gradientBrush(*gradient, origin);
    const qreal width = number(shapePath, "strokeWidth");
    if (width > 0) {
        const auto join = static_cast<Qt::PenJoinStyle>(shapePath.property("joinStyle").toInt());
        shape.stroke = QPen(colour(shapePath, "strokeColor"), width, Qt::SolidLine, Qt::SquareCap, join);
    }
    return shape;
}

void collect(QQuickItem& item, const QQuickItem& root, Drawing& drawing)
{
    // What places its children does so only now, without a window. A shape would ask for the window here.
    if (!isA(item, "QQuickShape"))
        item.ensurePolished();
    const QPointF origin = item.mapToItem(&root, QPointF());
    if (isA(item, "QQuickRectangle")) {
        QPainterPath outline;
        const qreal radius = number(item, "radius");
        outline.addRoundedRect({origin, item.size()}, radius, radius);
        drawing.shapes.push_back({outline, colour(item, "color")});
    } else if (isA(item, "QQuickShape")) {
        const QQmlListReference paths(&item, "data");
        for (qsizetype i = 0; i < paths.count(); ++i) {
            if (isA(*paths.at(i), "QQuickShapePath"))
                drawing.shapes.push_back(shapeOf(*paths.at(i), origin));
        }
    } else if (item.flags().testFlag(QQuickItem::ItemHasContents)) {
        failFor(item);
    }
    const auto children = item.childItems();
    for (QQuickItem* child : children)
        collect(*child, root, drawing);
}

} // namespace

QRectF Drawing::bounds() const
{
    QRectF all;
    for (const DrawnShape& shape : shapes) {
        const qreal reach = shape.stroke.style() == Qt::NoPen ? 0 : shape.stroke.widthF() / 2;
        all |= shape.outline.boundingRect().adjusted(-reach, -reach, reach, reach);
    }
    return all;
}

Drawing drawingOf(QQuickItem& item)
{
    Drawing drawing;
    collect(item, item, drawing);
    return drawing;
}

} // namespace cartloom
