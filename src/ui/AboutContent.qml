// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// What the About sheet says. Where the window is too low for it, it scrolls.
PageScroll {
    id: content

    required property string title
    required property url storePage
    required property string emulatorSite

    signal closed

    focus: true
    implicitHeight: column.implicitHeight
    contentHeight: column.implicitHeight
    scrollBarOutset: 14

    Keys.onReturnPressed: closed()
    Keys.onEnterPressed: closed()

    Column {
        id: column
        objectName: "aboutColumn"
        width: content.availableWidth
        spacing: 10

        Label {
            objectName: "aboutTitle"
            width: parent.width
            text: content.title
            font: Theme.title2Bold
        }

        Label {
            objectName: "gameCredit"
            width: parent.width
            text: "Quillet!64 belongs to its authors (Fernhollow Studios, made for the Homecart Game Jam). "
                  + "This app does not contain the game. It only downloads it from their official page, and "
                  + "you can get it there yourself:"
        }

        WebLink {
            objectName: "storeLink"
            text: address.replace(/^[a-z]+:\/\//, "")
            address: String(content.storePage)
        }

        Label {
            objectName: "emulatorNote"
            width: parent.width
            text: "Ares is an open source emulator (ISC license) from " + content.emulatorSite
                  + ". It is downloaded from its official GitHub releases page."
        }

        WebLink {
            objectName: "emulatorLink"
            text: content.emulatorSite
            address: content.emulatorSite === "" ? "" : "https://" + content.emulatorSite + "/"
        }

        Label {
            objectName: "licenceHeading"
            width: parent.width
            text: "Ares license"
            font: Theme.headline
        }

        TextPane {
            objectName: "licencePane"
            width: parent.width
            height: 170
            text: AresLicence.text
            textName: "licenceText"
        }

        PlainButton {
            objectName: "closeAbout"
            anchors.right: parent.right
            text: "Close"
            focus: true
            fillColor: down ? Theme.accentPressed : Theme.accent
            onClicked: content.closed()
            Accessible.defaultButton: true
        }
    }
}
