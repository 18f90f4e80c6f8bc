// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// The one large button. It looks the same when it is disabled: what it says then is what is going on.
ButtonBase {
    id: control

    cornerRadius: 14
    verticalPadding: 16
    font: Theme.bigButton

    contentItem: Label {
        objectName: "bigButtonTitle"
        text: control.text
        font: control.font
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
    background: SmoothRectangle {
        objectName: "bigButtonBackground"
        radius: control.cornerRadius
        fillColor: Theme.tinted(Theme.green, control.down ? 0.6 : 0.85)

        SmoothRectangle {
            anchors.fill: parent
            radius: control.cornerRadius
            fillColor: Theme.hoverShade
            visible: control.hovered && control.enabled
        }
    }
}
