// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// How the game is played, and how keys are given to it.
Item {
    id: card

    readonly property list<string> lines: [
        "A: jump. Press A against a wall to wall jump.",
        "C-Up / C-Down: change camera distance.",
        "Torso: hold A for double and triple jumps.",
        "Arms: B spin attack; spin in the air to hover.",
        "Fullbody: Z crouch; Z + C-Left kick."
    ]

    component Line: Label {
        objectName: "cardLine"
        width: parent?.width ?? 0
        font: Theme.caption
    }

    implicitHeight: content.implicitHeight + 24

    SmoothRectangle {
        objectName: "cardBackground"
        anchors.fill: parent
        radius: 10
        fillColor: Theme.faded(0.06)
    }

    Column {
        id: content
        objectName: "cardColumn"
        x: 12
        y: 12
        width: parent.width - 24
        spacing: 6

        Label {
            objectName: "cardTitle"
            width: parent.width
            text: "Controls"
            font: Theme.headline
        }

        Line {
            text: card.lines[0]
        }
        Line {
            text: card.lines[1]
        }
        Line {
            text: card.lines[2]
        }
        Line {
            text: card.lines[3]
        }
        Line {
            text: card.lines[4]
        }

        Rectangle {
            objectName: "cardDivider"
            width: parent.width
            height: 1
            color: Theme.divider
        }

        Label {
            objectName: "keyboardNote"
            width: parent.width
            text: "Ares does not come with preset keyboard keys. In Ares, open Settings, then Input, to "
                  + "assign keys to the N64 buttons once. A USB or Bluetooth game controller works too: map "
                  + "it in the same place."
            font: Theme.caption
            color: Theme.faded(0.7)
        }
    }
}
