// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom
import "Excerpt.js" as Excerpt

/// What went wrong, in the player's words, with the technical details and the ways out.
Item {
    id: box

    required property AppModel model

    readonly property string message: model.errorMessage ?? ""

    implicitHeight: content.implicitHeight + 20
    // The details of a new error are closed, however the old ones were left.
    onMessageChanged: details.expanded = false

    SmoothRectangle {
        objectName: "errorBackground"
        anchors.fill: parent
        radius: 10
        fillColor: Theme.tinted(Theme.orange, 0.12)
    }

    Column {
        id: content
        x: 10
        y: 10
        width: parent.width - 20
        spacing: 8

        Label {
            objectName: "errorMessage"
            width: parent.width
            text: Excerpt.of(box.message)
            color: Theme.orange
        }

        DisclosureGroup {
            id: details
            objectName: "errorDetails"
            width: parent.width
            visible: box.model.errorDetails !== ""
            label: "Show Details"

            TextPane {
                objectName: "detailsPane"
                width: parent.width
                height: Math.min(100, implicitHeight)
                text: Excerpt.of(box.model.errorDetails, Excerpt.longestDetails)
                textName: "detailsText"
            }
        }

        Flow {
            objectName: "recoveryRow"
            width: parent.width
            spacing: 8
            visible: box.model.gameDownloadFailed

            PlainButton {
                objectName: "openDownloadPage"
                text: "Open the download page"
                onClicked: Qt.openUrlExternally(box.model.storePage)
            }
            PlainButton {
                objectName: "alreadyHaveTheFile"
                text: "I already have the file"
                onClicked: box.model.chooseExistingGameFile()
            }
        }
    }
}
