// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Cartloom

/// The sheet that credits the game and the emulator.
Sheet {
    id: sheet

    required property url storePage
    required property string emulatorSite

    title: "About Cartloom"
    width: 460
    height: Math.min(implicitContentHeight + topPadding + bottomPadding, (parent?.height ?? 0) - 20)
    closePolicy: T.Popup.CloseOnEscape

    contentItem: AboutContent {
        title: sheet.title
        storePage: sheet.storePage
        emulatorSite: sheet.emulatorSite
        onClosed: sheet.close()
    }
}
