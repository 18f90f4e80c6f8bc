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
    property real strokeWidth: 0

    readonly property real halfSide: Math.min(width, height) / 2
    readonly property real arcRadius: Math.min(radius, halfSide)
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

            startX: shape.reach
            startY: 0
            PathLine {
                x: shape.width - shape.reach
                y: 0
            }
            PathCubic {
                control1X: shape.width - shape.pull
                control1Y: 0
                control2X: shape.width
                control2Y: shape.pull
                x: shape.width
                y: shape.reach
            }
            PathLine {
                x: shape.width
                y: shape.height - shape.reach
            }
            PathCubic {
                control1X: shape.width
                control1Y: shape.height - shape.pull
                control2X: shape.width - shape.pull
                control2Y: shape.height
                x: shape.width - shape.reach
                y: shape.height
            }
            PathLine {
                x: shape.reach
                y: shape.height
            }
            PathCubic {
                control1X: shape.pull
                control1Y: shape.height
                control2X: 0
                control2Y: shape.height - shape.pull
                x: 0
                y: shape.height - shape.reach
            }
            PathLine {
                x: 0
                y: shape.reach
            }
            PathCubic {
                control1X: 0
                control1Y: shape.pull
                control2X: shape.pull
                control2Y: 0
                x: shape.reach
                y: 0
            }
        }
    }
}
