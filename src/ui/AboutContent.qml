// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// The text of the About sheet, which scrolls in a low window, and the Close button below it.
FocusScope {
    id: content

    required property string title
    required property url storePage
    required property string emulatorSite

    /// What the scrolled area has more on each side, so that no ring around what has the keyboard is cut off.
    readonly property real bleed: 5

    signal closed

    /// A host name that no line ends in: word joiners follow its hyphens.
    function unbroken(host: string): string {
        return host.replace(/-/g, "-\u2060");
    }

    focus: true
    implicitHeight: column.implicitHeight + column.spacing + closeButton.height

    // Not the key that is still down from opening it.
    Keys.onReturnPressed: event => event.isAutoRepeat || closed()
    Keys.onEnterPressed: event => event.isAutoRepeat || closed()

    PageScroll {
        id: scroll
        objectName: "aboutScroll"
        x: -content.bleed
        y: -content.bleed
        width: parent.width + 2 * content.bleed
        height: closeButton.y - column.spacing + 2 * content.bleed
        contentHeight: body.height
        scrollBarOutset: 14 - content.bleed
        focus: true

        Item {
            id: body
            width: scroll.availableWidth
            height: column.implicitHeight + 2 * content.bleed

            Column {
                id: column
                objectName: "aboutColumn"
                anchors.fill: parent
                anchors.margins: content.bleed
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
                    text: "Quillet!64 belongs to its authors (Fernhollow Studios, made for the Homecart Game "
                          + "Jam). This app does not contain the game. It only downloads it from their "
                          + "official page, and you can get it there yourself:"
                }

                WebLink {
                    objectName: "storeLink"
                    text: address.replace(/^[a-z]+:\/\//, "")
                    address: String(content.storePage)
                }

                Label {
                    readonly property string before: "Ares is an open source emulator (ISC license) from "
                    readonly property string after: ". It is downloaded from its official GitHub releases page."

                    objectName: "emulatorNote"
                    width: parent.width
                    text: before + content.unbroken(content.emulatorSite) + after
                    Accessible.name: before + content.emulatorSite + after
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
            }
        }
    }

    PlainButton {
        id: closeButton
        objectName: "closeAbout"
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        text: "Close"
        fill: Theme.defaultFill
        onClicked: content.closed()
        Accessible.defaultButton: true
    }
}
