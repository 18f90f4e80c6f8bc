// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// A link to a page, which opens in the system's browser. Hidden without an address. No button of the toolkit: in
/// Qt 6.4 those keep their own role.
Label {
    id: link

    required property string address

    function follow() {
        Qt.openUrlExternally(address);
    }

    width: Math.min(Math.ceil(implicitWidth), parent.width)
    height: Math.max(Math.ceil(implicitHeight), 24)
    verticalAlignment: Text.AlignVCenter
    font: Qt.font({ pixelSize: Theme.body.pixelSize, underline: hover.hovered })
    color: tap.pressed ? Theme.linkPressed : hover.hovered ? Theme.linkHovered : Theme.link
    visible: address !== ""
    activeFocusOnTab: true

    // Return is left to the sheet's default button.
    Keys.onSpacePressed: event => event.isAutoRepeat || follow()

    Accessible.role: Accessible.Link
    Accessible.focusable: true
    Accessible.onPressAction: follow()

    TapHandler {
        id: tap
        onTapped: link.follow()
    }

    HoverHandler {
        id: hover
        cursorShape: Qt.PointingHandCursor
    }

    FocusRing {
        visible: link.activeFocus
        innerRadius: 2
    }
}
