// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Shapes
import QtQuick.Templates as T
import Cartloom

/// A check box with its label.
T.CheckBox {
    id: control

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: Math.max(implicitContentHeight, implicitIndicatorHeight) + topPadding + bottomPadding
    spacing: 6
    font: Theme.body

    // A key that is held down presses once. The space bar is the template's.
    Keys.onReturnPressed: event => event.isAutoRepeat || control.toggle()
    Keys.onEnterPressed: event => event.isAutoRepeat || control.toggle()

    indicator: SmoothRectangle {
        objectName: "checkIndicator"
        anchors.verticalCenter: parent.verticalCenter
        implicitWidth: Theme.scaled(14)
        implicitHeight: implicitWidth
        radius: width / 4
        fillColor: control.checked ? Theme.accent : control.down ? Theme.controlPressed : Theme.control
        strokeColor: control.checked ? Theme.accent : Theme.scrollHandle
        strokeWidth: 1

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

    FocusRing {
        visible: control.visualFocus
        innerRadius: 3
    }

    Accessible.role: Accessible.CheckBox
    Accessible.name: text
}
