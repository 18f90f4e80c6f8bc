// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Shapes

/// A rectangle with continuous corners: their curvature grows from nothing, as a superellipse's does. Where a
/// side is too short for that, its corners approach circular arcs; a radius of half the sides is a circle.
Item {
    id: shape

    property real radius: 0
    property color fillColor: "transparent"
    property ShapeGradient gradient: null
    property color strokeColor: "transparent"
    /// The stroke lies inside. Half of it covers the fill, so give it an opaque colour.
    property real strokeWidth: 0

    readonly property real inset: strokeWidth / 2
    readonly property real farX: width - inset
    readonly property real farY: height - inset
    readonly property real halfSide: Math.min(width, height) / 2 - inset
    readonly property real arcRadius: Math.min(radius - inset, halfSide)
    /// How far from the corner its curve begins.
    readonly property real reach: Math.min(1.5287 * arcRadius, halfSide)
    /// How far from the corner the curve's control points are, for it to pass where a circular arc would.
    readonly property real pull: ((8 - 4 * Math.SQRT2) * arcRadius - reach) / 3

    // Newer Qt gives a Shape an implicit size of its own: that of what it draws, which here follows from the
    // size.
    Shape {
        anchors.fill: parent

        ShapePath {
            // Where a GPU draws, a transparent colour would hide the gradient.
            fillColor: shape.gradient ? "white" : shape.fillColor
            fillGradient: shape.gradient
            strokeColor: shape.strokeColor
            strokeWidth: shape.strokeWidth > 0 ? shape.strokeWidth : -1

            startX: shape.inset + shape.reach
            startY: shape.inset
            PathLine {
                x: shape.farX - shape.reach
                y: shape.inset
            }
            PathCubic {
                control1X: shape.farX - shape.pull
                control1Y: shape.inset
                control2X: shape.farX
                control2Y: shape.inset + shape.pull
                x: shape.farX
                y: shape.inset + shape.reach
            }
            PathLine {
                x: shape.farX
                y: shape.farY - shape.reach
            }
            PathCubic {
                control1X: shape.farX
                control1Y: shape.farY - shape.pull
                control2X: shape.farX - shape.pull
                control2Y: shape.farY
                x: shape.farX - shape.reach
                y: shape.farY
            }
            PathLine {
                x: shape.inset + shape.reach
                y: shape.farY
            }
            PathCubic {
                control1X: shape.inset + shape.pull
                control1Y: shape.farY
                control2X: shape.inset
                control2Y: shape.farY - shape.pull
                x: shape.inset
                y: shape.farY - shape.reach
            }
            PathLine {
                x: shape.inset
                y: shape.inset + shape.reach
            }
            PathCubic {
                control1X: shape.inset
                control1Y: shape.inset + shape.pull
                control2X: shape.inset + shape.pull
                control2Y: shape.inset
                x: shape.inset + shape.reach
                y: shape.inset
            }
        }
    }
}
