// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Cartloom

/// The sheet that credits the game and the emulator.
T.Dialog {
    id: sheet

    /// Whose "showAbout" says whether the sheet is shown.
    required property ContentView page
    required property url storePage
    required property string emulatorSite

    title: "About Cartloom"
    visible: page.showAbout
    onClosed: page.showAbout = false
    parent: T.Overlay.overlay
    anchors.centerIn: parent
    width: 460
    height: Math.min(implicitContentHeight + topPadding + bottomPadding, (parent?.height ?? 0) - 20)
    padding: 20
    modal: true
    focus: true
    closePolicy: T.Popup.CloseOnEscape

    T.Overlay.modal: Rectangle {
        objectName: "aboutScrim"
        color: Theme.scrim
    }

    background: SmoothRectangle {
        radius: 14
        fillColor: Theme.raised
        strokeColor: Theme.raisedEdge
        strokeWidth: 1
    }

    contentItem: AboutContent {
        title: sheet.title
        storePage: sheet.storePage
        emulatorSite: sheet.emulatorSite
        onClosed: sheet.close()
    }
}
