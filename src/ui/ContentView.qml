// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// The whole page of the window.
Rectangle {
    id: page

    required property AppModel model

    color: Qt.rgba(0.09, 0.1, 0.12, 1)

    Text {
        anchors.centerIn: parent
        color: "white"
        text: page.model.setupDone ? "Play" : "Set up and Play"
    }
}
