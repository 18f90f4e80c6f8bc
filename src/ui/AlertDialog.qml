// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Cartloom
import "Excerpt.js" as Excerpt

/// A question over the dimmed page, which takes the keyboard until it is answered. It does not close by
/// itself: whoever shows it binds "visible" and hears of the answer, after the action, from "answered".
T.Dialog {
    id: alert

    required property string message
    default property list<AlertAction> actions

    signal answered

    /// Answers with the action that a key stands for.
    function answerAs(role: int) {
        Array.from(actions).find(action => action.role === role)?.trigger();
    }

    Component.onCompleted: Array.from(actions).forEach(action => action.triggered.connect(answered))

    parent: T.Overlay.overlay
    anchors.centerIn: parent
    width: 340
    height: implicitHeight
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    padding: 20
    modal: true
    focus: true
    closePolicy: T.Popup.NoAutoClose

    T.Overlay.modal: Rectangle {
        objectName: "alertScrim"
        color: Theme.scrim
    }

    background: SmoothRectangle {
        radius: 14
        fillColor: Theme.raised
        strokeColor: Theme.raisedEdge
        strokeWidth: 1
    }

    contentItem: AlertContent {
        title: alert.title
        message: Excerpt.of(alert.message)
        actions: Array.from(alert.actions)
        room: (alert.parent?.height ?? 0) - 40
        Keys.onReturnPressed: alert.answerAs(AlertAction.Default)
        Keys.onEnterPressed: alert.answerAs(AlertAction.Default)
        Keys.onEscapePressed: alert.answerAs(AlertAction.Cancel)
    }
}
