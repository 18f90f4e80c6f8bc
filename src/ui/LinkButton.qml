// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// A button that is drawn as a link.
ButtonBase {
    id: control

    cornerRadius: 2
    drawnHeight: implicitContentHeight
    font: Qt.font({ pixelSize: Theme.caption.pixelSize, underline: hovered && enabled })
    opacity: enabled ? 1 : 0.4

    contentItem: Label {
        text: control.text
        font: control.font
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        color: control.down ? Theme.linkPressed : control.hovered ? Theme.linkHovered : Theme.link
        Accessible.ignored: true
    }

    HoverHandler {
        cursorShape: Qt.PointingHandCursor
    }
}
