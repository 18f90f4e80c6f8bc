// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Cartloom

/// The behaviour that all buttons share beyond the toolkit's own.
T.AbstractButton {
    id: control

    /// The corner radius of the focus ring's inner edge.
    property real cornerRadius: 3
    /// A wider title wraps.
    property real maximumWidth: parent?.width ?? implicitWidth
    readonly property real minimumTarget: 24
    /// The height of what is drawn, which may be less than the target's.
    property real drawnHeight: height
    /// True if the focus came from the pointer. Unlike visualFocus, it outlives a popup or another window.
    property bool pointedAt: false

    /// Does what a click does.
    function press() {
        if (checkable)
            toggle();
        clicked();
    }

    /// The colour of a fill in the button's state.
    function fillNow(fill: ButtonFill): color {
        return down ? fill.pressed : hovered && enabled ? fill.hovered : fill.normal;
    }

    // Whole pixels, so that edges are sharp.
    implicitWidth: Math.max(minimumTarget, Math.ceil(implicitContentWidth + leftPadding + rightPadding))
    implicitHeight: Math.max(minimumTarget, Math.ceil(implicitContentHeight + topPadding + bottomPadding))
    width: Math.min(implicitWidth, maximumWidth)
    hoverEnabled: true

    onFocusReasonChanged: {
        if (focusReason !== Qt.ActiveWindowFocusReason && focusReason !== Qt.PopupFocusReason)
            pointedAt = focusReason === Qt.MouseFocusReason;
    }
    // A hidden item keeps the focus in Qt 6.4.
    onVisibleChanged: visible || !activeFocus || (focus = false)

    // Return and Enter press on every platform; a key that repeats presses once.
    Keys.onReturnPressed: event => event.isAutoRepeat || press()
    Keys.onEnterPressed: event => event.isAutoRepeat || press()
    Keys.onSpacePressed: event => event.accepted = event.isAutoRepeat
    Keys.onReleased: event => event.accepted = event.isAutoRepeat || !down

    Accessible.name: text
    Accessible.pressed: down
    Accessible.onPressAction: enabled && press()

    FocusRing {
        visible: control.activeFocus && !control.pointedAt
        innerRadius: control.cornerRadius
        surplus: Math.floor((control.height - control.drawnHeight) / 2)
    }
}
