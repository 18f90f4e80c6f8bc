// SPDX-License-Identifier: MIT
#pragma once

#include <QBrush>
#include <QPainterPath>
#include <QPen>
#include <QQuickItem>

#include <vector>

namespace cartloom
{

/// One filled outline.
struct DrawnShape
{
    QPainterPath outline;
    /// A colour, or a linear gradient in the coordinates of the drawing.
    QBrush fill;
    QPen stroke{Qt::NoPen};
};

/// A picture made of shapes, back to front, which can be drawn in any size.
struct Drawing
{
    std::vector<DrawnShape> shapes;

    /// What the shapes cover, strokes included.
    [[nodiscard]] QRectF bounds() const;
};

/// What an item and all below it draw, in the item's coordinates: rectangles and shapes of lines, curves and
/// polylines. Throws std::runtime_error for an item or an outline of any other kind, so that nothing is left
/// out unnoticed. Main thread.
[[nodiscard]] Drawing drawingOf(QQuickItem& item);

} // namespace cartloom
