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

    CheckControl {
        objectName: "fullscreenToggle"
        anchors.horizontalCenter: parent.horizontalCenter
        text: "Fullscreen"
        checked: footer.model.fullscreen
        onClicked: footer.model.fullscreen = checked
    }

    Flow {
        objectName: "footerLinks"

        readonly property real oneLine: showInFinder.width + checkForUpdate.width + reset.width + about.width
                                        + 3 * spacing

        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(oneLine, parent.width)
        spacing: 14

        LinkButton {
            id: showInFinder
            objectName: "showInFinder"
            text: "Show in Finder"
            onClicked: footer.model.revealStorage()
        }
        LinkButton {
            id: checkForUpdate
            objectName: "checkForUpdate"
            text: "Check for a newer Ares"
            enabled: footer.model.atRest
            onClicked: footer.model.checkForUpdate()
        }
        LinkButton {
            id: reset
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
