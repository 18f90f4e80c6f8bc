// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Shapes
import Cartloom

/// The game's mascot, drawn from plain shapes, back to front. It does not scale with the window.
Item {
    id: icon

    implicitWidth: 110
    implicitHeight: 130
    Accessible.ignored: true

    Rectangle {
        objectName: "antenna"
        anchors.centerIn: parent
        anchors.verticalCenterOffset: -52
        width: 4
        height: 14
        color: Theme.grey
    }

    SmoothRectangle {
        objectName: "antennaTip"
        anchors.centerIn: parent
        anchors.verticalCenterOffset: -60
        width: 10
        height: 10
        radius: 5
        fillColor: Theme.yellow
    }

    SmoothRectangle {
        objectName: "head"
        anchors.centerIn: parent
        width: 90
        height: 80
        radius: 22
        gradient: LinearGradient {
            y2: 80
            GradientStop {
                position: 0
                color: Qt.rgba(0.75, 0.75, 0.75, 1)
            }
            GradientStop {
                position: 1
                color: Qt.rgba(0.5, 0.5, 0.5, 1)
            }
        }
    }

    SmoothRectangle {
        objectName: "facePlate"
        anchors.centerIn: parent
        anchors.verticalCenterOffset: -6
        width: 70
        height: 36
        radius: 14
        fillColor: Qt.rgba(0.12, 0.12, 0.12, 1)
    }

    Row {
        objectName: "eyes"
        anchors.centerIn: parent
        anchors.verticalCenterOffset: -6
        spacing: 18

        SmoothRectangle {
            width: 14
            height: 14
            radius: 7
            fillColor: Theme.green
        }
        SmoothRectangle {
            width: 14
            height: 14
            radius: 7
            fillColor: Theme.green
        }
    }

    Bolt {
        objectName: "bolt"
        anchors.centerIn: parent
        anchors.verticalCenterOffset: 25
        color: Theme.yellow
    }
}
