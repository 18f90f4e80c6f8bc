// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// The one window.
Window {
    id: window

    required property AppModel model

    title: "Cartloom"
    width: 480
    height: 640
    minimumWidth: 480
    minimumHeight: 600
    visible: true
    color: Theme.background
    Component.onCompleted: WindowIcon.drawFrom(view.robot)

    Shortcut {
        sequences: ["Ctrl+W", "Ctrl+Q"]
        context: Qt.ApplicationShortcut
        onActivated: window.close()
    }

    ContentView {
        id: view
        anchors.fill: parent
        model: window.model
    }
}
