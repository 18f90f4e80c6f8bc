// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// The play button, and under it what the first press will do.
Column {
    id: area

    required property AppModel model

    readonly property string restTitle: model.setupDone ? "Play" : "Set up and Play"

    spacing: 6

    BigGreenButtonStyle {
        objectName: "mainButton"
        width: parent.width
        text: area.model.atRest ? area.restTitle : area.model.stageTitle
        enabled: area.model.atRest
        onClicked: area.model.play()
    }

    Label {
        objectName: "hint"
        width: parent.width
        visible: !area.model.setupDone && area.model.atRest
        text: "Downloads the Ares emulator (about 80 MB) and the game (about 16 MB). Once only."
        font: Theme.caption
        color: Theme.faded(0.6)
        horizontalAlignment: Text.AlignHCenter
    }
}
