// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// A link to a page, which the system's browser opens. Without an address there is no link.
/// It is no control of the toolkit's: those tell assistive technology their own role, whatever they are
/// given.
Item {
    id: link

    required property string address
    required property string text

    function follow() {
        Qt.openUrlExternally(address);
    }

    implicitWidth: label.implicitWidth
    implicitHeight: label.implicitHeight
    visible: address !== ""
    activeFocusOnTab: true

    Keys.onReturnPressed: event => event.isAutoRepeat || follow()
    Keys.onEnterPressed: event => event.isAutoRepeat || follow()
    Keys.onSpacePressed: event => event.isAutoRepeat || follow()

    Accessible.role: Accessible.Link
    Accessible.name: text
    Accessible.focusable: true
    Accessible.onPressAction: follow()

    Label {
        id: label
        text: link.text
        color: tap.pressed ? Theme.linkPressed : Theme.link
        Accessible.ignored: true
    }

    TapHandler {
        id: tap
        onTapped: link.follow()
    }

    HoverHandler {
        cursorShape: Qt.PointingHandCursor
    }

    FocusRing {
        visible: link.activeFocus
        innerRadius: 2
    }
}
