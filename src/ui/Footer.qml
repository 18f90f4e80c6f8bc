// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom
import "Excerpt.js" as Excerpt

/// Full screen or not, the rarer actions, and which emulator is used.
Column {
    id: footer

    required property AppModel model

    readonly property string installedLine: model.aresVersion === undefined ? "" : "Ares " + model.aresVersion
    readonly property string externalLine: model.usingExternalAres ? "Using the Ares already on this Mac" : ""

    signal aboutRequested

    spacing: 8

    // The targets in both rows are taller than the rows. They do not overlap.
    Item {
        objectName: "fullscreenRow"
        width: parent.width
        implicitHeight: fullscreen.indicator.height

        CheckControl {
            id: fullscreen
            objectName: "fullscreenToggle"
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.bottom: parent.bottom
            anchors.bottomMargin: -Math.min(2, (height - drawnHeight) / 4)
            text: "Fullscreen"
            checked: footer.model.fullscreen
            onClicked: footer.model.fullscreen = checked
        }
    }

    Item {
        objectName: "linksRow"
        width: parent.width
        implicitHeight: links.implicitHeight - links.surplus

        CentredFlow {
            id: links
            objectName: "footerLinks"

            readonly property real surplus: about.height - about.drawnHeight

            y: -surplus / 2
            width: parent.width
            spacing: 14

            LinkButton {
                objectName: "showInFinder"
                text: "Show in Finder"
                onClicked: footer.model.revealStorage()
            }
            LinkButton {
                objectName: "checkForUpdate"
                text: "Check for a newer Ares"
                enabled: footer.model.atRest
                onClicked: footer.model.checkForUpdate()
            }
            LinkButton {
                objectName: "reset"
                text: "Reset"
                enabled: footer.model.atRest
                onClicked: footer.model.confirmReset = true
            }
            LinkButton {
                id: about
                objectName: "about"
                text: "About"
                onClicked: footer.aboutRequested()
            }
        }
    }

    Label {
        objectName: "statusLine"
        width: parent.width
        visible: text !== ""
        text: Excerpt.of(footer.installedLine) || footer.externalLine
        font: Theme.caption2
        color: Theme.faded(0.4)
        horizontalAlignment: Text.AlignHCenter
    }
}
