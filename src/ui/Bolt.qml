// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Shapes

/// A lightning bolt, of the size that a symbol has in a text of 14 points.
Shape {
    id: bolt

    property color color: "white"

    width: 10
    height: 16

    ShapePath {
        fillColor: bolt.color
        strokeColor: bolt.color
        strokeWidth: 1
        joinStyle: ShapePath.RoundJoin

        startX: 6.6
        startY: 0.8
        PathPolyline {
            path: [
                Qt.point(6.6, 0.8),
                Qt.point(0.8, 8.9),
                Qt.point(4.5, 8.9),
                Qt.point(3.4, 15.2),
                Qt.point(9.2, 7.1),
                Qt.point(5.5, 7.1),
                Qt.point(6.6, 0.8)
            ]
        }
    }
}
