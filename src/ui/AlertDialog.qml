// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Cartloom
import "Excerpt.js" as Excerpt

/// A question that stays until it is answered. "answered" follows the action of the answer and ends what asks.
Sheet {
    id: alert

    required property string message
    default property list<AlertAction> actions

    signal answered

    /// Answers with the action that a key stands for.
    function answerAs(role: int) {
        Array.from(actions).find(action => action.role === role)?.trigger();
    }

    Component.onCompleted: Array.from(actions).forEach(action => action.triggered.connect(answered))

    width: 340
    height: implicitContentHeight + topPadding + bottomPadding
    closePolicy: T.Popup.NoAutoClose

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
