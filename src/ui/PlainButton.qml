// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// An ordinary push button.
ButtonBase {
    id: control

    property color fillColor: down ? Theme.controlPressed : Theme.control
    property color titleColor: Theme.text

    readonly property real cornerRadius: 6

    leftPadding: 12
    rightPadding: 12
    topPadding: 3
    bottomPadding: 3
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
    }

    FocusRing {
        visible: control.visualFocus
        innerRadius: control.cornerRadius
    }
}
