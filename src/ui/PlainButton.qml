// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// An ordinary push button.
ButtonBase {
    id: control

    property color fillColor: down ? Theme.controlPressed : Theme.control
    property color titleColor: Theme.text

    cornerRadius: 6
    horizontalPadding: 12
    verticalPadding: 3
    font: Theme.body
    opacity: enabled ? 1 : 0.4

    contentItem: Label {
        text: control.text
        font: control.font
        color: control.titleColor
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
    background: Rectangle {
        radius: control.cornerRadius
        color: control.fillColor

        Rectangle {
            anchors.fill: parent
            radius: parent.radius
            color: Theme.hoverTint
            visible: control.hovered && !control.down
        }
    }
}
