// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// Takes a game file that is dropped on the window, and shows that it would.
DropArea {
    id: area

    required property AppModel model

    keys: ["text/uri-list"]
    onDropped: drop => area.model.openDropped(drop.urls)

    Loader {
        objectName: "dropHighlight"
        anchors.fill: parent
        anchors.margins: 6
        visible: area.containsDrag
        active: visible
        sourceComponent: SmoothRectangle {
            radius: 14
            fillColor: Theme.tinted(Theme.green, 0.08)
            strokeColor: Theme.green
            strokeWidth: 2
        }
    }
}
