// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// Asks before everything is deleted.
AlertDialog {
    id: alert

    required property AppModel model

    title: "Reset everything?"
    message: "This deletes the downloaded Ares emulator and the game. The next click downloads them again."
    onAnswered: model.confirmReset = false

    AlertAction {
        text: "Delete"
        role: AlertAction.Destructive
        onTriggered: alert.model.reset()
    }
    AlertAction {
        text: "Cancel"
        role: AlertAction.Cancel
        focused: true
    }
}
