// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// An ordinary push button.
ButtonBase {
    id: control

    property ButtonFill fill: Theme.ordinaryFill

    cornerRadius: 6
    horizontalPadding: 12
    verticalPadding: 3
    font: Theme.body
    opacity: enabled ? 1 : 0.4

    contentItem: Label {
        text: control.text
        font: control.font
        color: control.fill.title
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
    background: Rectangle {
        radius: control.cornerRadius
        color: control.fillNow(control.fill)
    }
}
