// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// The whole page of the window: what the model's fields say, and controls that call its actions.
Rectangle {
    id: page

    required property AppModel model

    readonly property var stageTitles: ({
            gettingAres: "Getting Ares",
            gettingGame: "Getting the game",
            starting: "Starting",
            playing: "Playing..."
        })
    readonly property string stageTitle: stageTitles[model.stage] ?? ""
    readonly property string restTitle: model.setupDone ? "Play" : "Set up and Play"
    readonly property string buttonTitle: model.stage === "idle" ? restTitle : stageTitle

    color: Theme.background

    PageScroll {
        objectName: "pageScroll"
        anchors.fill: parent
        contentHeight: column.implicitHeight

        Column {
            id: column
            objectName: "pageColumn"

            readonly property real lineWidth: width - 2 * padding

            width: page.width
            padding: 24
            spacing: 14

            RobotIcon {
                objectName: "robotIcon"
                anchors.horizontalCenter: parent.horizontalCenter
            }

            Label {
                objectName: "gameTitle"
                width: column.lineWidth
                text: "Quillet!64"
                font: Theme.gameTitle
                horizontalAlignment: Text.AlignHCenter
            }

            Label {
                objectName: "blurb"
                width: column.lineWidth
                text: "A free 3D platformer for the Nintendo 64, made for the 2025 Homecart Game Jam. "
                      + "Plays in the Ares emulator."
                font: Theme.callout
                color: Theme.faded(0.7)
                horizontalAlignment: Text.AlignHCenter
            }

            MainButton {
                objectName: "mainButtonArea"
                width: column.lineWidth
                model: page.model
                title: page.buttonTitle
            }

            StatusArea {
                objectName: "statusArea"
                width: column.lineWidth
                visible: page.model.canCancel || page.model.stage === "starting"
                model: page.model
                title: page.stageTitle
            }

            Messages {
                objectName: "messages"
                width: column.lineWidth
                model: page.model
            }
        }
    }

    ExternalOfferAlert {
        objectName: "externalOfferAlert"
        model: page.model
    }
}
