// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Cartloom

/// A modal dialog in the middle of the dimmed page, open for as long as it exists.
T.Dialog {
    parent: T.Overlay.overlay
    anchors.centerIn: parent
    padding: 20
    modal: true
    focus: true
    visible: true
    // Qt 6.4 leaves a dialog without a name for assistive technology.
    Component.onCompleted: contentItem.parent.Accessible.name = title

    T.Overlay.modal: Rectangle {
        color: Theme.scrim
    }

    background: SmoothRectangle {
        radius: 14
        fillColor: Theme.raised
        strokeColor: Theme.raisedEdge
        // Whole dots of the screen.
        strokeWidth: Math.round(Screen.devicePixelRatio) / Screen.devicePixelRatio
    }
}
