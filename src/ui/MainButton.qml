// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// The play button, and under it what the first press will do.
Column {
    id: area

    required property AppModel model
    required property string title

    readonly property bool atRest: model.stage === "idle"

    spacing: 6

    BigGreenButtonStyle {
        objectName: "mainButton"
        width: parent.width
        text: area.title
        enabled: area.atRest
        onClicked: area.model.play()
    }

    Label {
        objectName: "hint"
        width: parent.width
        visible: !area.model.setupDone && area.atRest
        text: "Downloads the Ares emulator (about 80 MB) and the game (about 16 MB). Once only."
        font: Theme.caption
        color: Theme.faded(0.6)
        horizontalAlignment: Text.AlignHCenter
    }
}
