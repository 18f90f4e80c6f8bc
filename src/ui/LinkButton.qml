// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// A button that is drawn as a link.
ButtonBase {
    id: control

    font: Theme.caption
    opacity: enabled ? 1 : 0.4
    cursorShape: Qt.PointingHandCursor

    contentItem: Label {
        text: control.text
        font: control.font
        color: control.down ? Theme.linkPressed : Theme.link
        Accessible.ignored: true
    }

    FocusRing {
        visible: control.visualFocus
        innerRadius: 2
    }
}
