// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Shapes
import Cartloom

/// A check box with its label. Bind "checked" and change what it is bound to on "clicked".
ButtonBase {
    id: control

    checkable: true
    spacing: 6
    drawnHeight: implicitContentHeight
    font: Theme.body

    indicator: Rectangle {
        objectName: "checkIndicator"
        y: Math.floor((control.height - height) / 2)
        width: Theme.scaled(14)
        height: width
        radius: width / 4
        color: control.fillNow(control.checked ? Theme.defaultFill : Theme.ordinaryFill)
        // Whole dots of the screen.
        border.width: Math.round(Screen.devicePixelRatio) / Screen.devicePixelRatio
        border.color: control.hovered && control.enabled ? Theme.text : control.checked ? Theme.link : Theme.controlEdge

        Shape {
            objectName: "checkMark"
            anchors.centerIn: parent
            width: 14
            height: 14
            scale: parent.width / width
            visible: control.checked

            ShapePath {
                fillColor: "transparent"
                strokeColor: Theme.text
                strokeWidth: 2
                capStyle: ShapePath.RoundCap
                joinStyle: ShapePath.RoundJoin
                startX: 3.5
                startY: 7.2
                PathLine {
                    x: 6
                    y: 10
                }
                PathLine {
                    x: 10.5
                    y: 4
                }
            }
        }
    }
    contentItem: Label {
        leftPadding: control.indicator.width + control.spacing
        text: control.text
        font: control.font
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }

    // Without this, Qt changes "checked" and nothing hears of it.
    Accessible.onToggleAction: enabled && press()
}
