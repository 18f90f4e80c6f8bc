// SPDX-License-Identifier: MIT
import QtQuick

/// What all buttons have in common: size from their content, what presses them, name and role. It is no control
/// of the toolkit's: loading that module would be an eighth of the start.
Item {
    id: control

    property string text
    property font font
    property Item contentItem: null
    property Item background: null
    property real topPadding: 0
    property real bottomPadding: 0
    property real leftPadding: 0
    property real rightPadding: 0
    property alias cursorShape: pointer.cursorShape

    /// Whether a finger, the mouse or the space bar holds it down.
    readonly property bool down: pointer.containsPress || spaceHolds
    /// Whether it has the keyboard and did not get it by being pointed at; that is still so when the window or
    /// the page has been left and comes back.
    readonly property bool visualFocus: activeFocus && !pointedAt
    /// Whether a click gives it the keyboard: not where the system's own buttons leave that to the Tab key.
    property bool focusOnClick: Qt.platform.os !== "osx"
    property bool pointedAt: false
    property bool spaceHolds: false

    signal clicked

    implicitWidth: (contentItem?.implicitWidth ?? 0) + leftPadding + rightPadding
    implicitHeight: (contentItem?.implicitHeight ?? 0) + topPadding + bottomPadding
    activeFocusOnTab: true

    onFocusChanged: pointedAt = pointedAt && focus
    onActiveFocusChanged: spaceHolds = false
    onEnabledChanged: spaceHolds = false
    // What cannot be seen has no keyboard.
    onVisibleChanged: visible || !activeFocus || (focus = false)

    Component.onCompleted: {
        if (background) {
            background.parent = control;
            background.z = -1;
            background.anchors.fill = control;
        }
        contentItem.parent = control;
        contentItem.anchors.fill = control;
        contentItem.anchors.topMargin = topPadding;
        contentItem.anchors.bottomMargin = bottomPadding;
        contentItem.anchors.leftMargin = leftPadding;
        contentItem.anchors.rightMargin = rightPadding;
    }

    // A key that is held down presses once.
    Keys.onReturnPressed: event => event.isAutoRepeat || clicked()
    Keys.onEnterPressed: event => event.isAutoRepeat || clicked()
    Keys.onSpacePressed: event => spaceHolds = spaceHolds || !event.isAutoRepeat
    Keys.onReleased: event => {
        if (event.key !== Qt.Key_Space || event.isAutoRepeat || !spaceHolds)
            return;
        event.accepted = true;
        spaceHolds = false;
        clicked();
    }

    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.focusable: true
    Accessible.pressed: down
    Accessible.onPressAction: control.enabled && control.clicked()

    MouseArea {
        id: pointer
        anchors.fill: parent
        // A finger may go on to scroll the page; the mouse may leave the button and come back.
        onPressed: mouse => {
            preventStealing = mouse.source === Qt.MouseEventNotSynthesized;
            if (!control.focusOnClick)
                return;
            control.pointedAt = true;
            control.forceActiveFocus(Qt.MouseFocusReason);
        }
        onClicked: control.clicked()
    }
}
