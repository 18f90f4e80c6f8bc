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

    /// Whether the page waits for an answer to something that lies over it.
    readonly property bool asking: model.offerExternal !== undefined || model.updateOffer !== undefined
                                   || model.confirmReset || showAbout || model.openPanel.isOpen
    property bool showAbout: false
    /// Whether nothing has the keyboard: what lay over the page took it, and gives it back to nobody.
    readonly property bool leftAlone: !asking && Window.activeFocusItem === Window.contentItem
    readonly property alias robot: robotIcon

    color: Theme.background

    // Not at once: it is while the keyboard changes hands that nobody has it.
    Timer {
        interval: 0
        running: page.leftAlone
        onTriggered: pageScroll.forceActiveFocus(Qt.PopupFocusReason)
    }

    Shortcut {
        sequence: "Ctrl+O"
        enabled: !page.asking
        onActivated: page.model.openROM()
    }

    Shortcut {
        sequence: "Escape"
        enabled: page.model.canCancel && !page.asking
        onActivated: page.model.cancel()
    }

    Announcer {
        objectName: "announcer"
        model: page.model
        stageTitle: page.stageTitle
    }

    PageScroll {
        id: pageScroll
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
                id: robotIcon
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

            LazyLoader {
                objectName: "statusArea"
                width: column.lineWidth
                visible: wanted
                component: "StatusArea"
                wanted: page.model.canCancel || page.model.stage === "starting"
                properties: ({ page: page })
            }

            Messages {
                objectName: "messages"
                width: column.lineWidth
                model: page.model
            }

            PlainButton {
                objectName: "openROM"
                anchors.horizontalCenter: parent.horizontalCenter
                text: "Open a ROM file (.z64 / .v64)..."
                enabled: page.model.stage === "idle"
                onClicked: page.model.openROM()
            }

            ControlsCard {
                objectName: "controlsCard"
                width: column.lineWidth
            }

            Footer {
                objectName: "footer"
                width: column.lineWidth
                model: page.model
                onAboutRequested: page.showAbout = true
            }
        }
    }

    FileDrop {
        objectName: "fileDrop"
        anchors.fill: parent
        enabled: page.model.stage === "idle" && !page.asking
        model: page.model
    }

    OverlayLoader {
        objectName: "externalOfferAlert"
        component: "ExternalOfferAlert"
        wanted: page.model.offerExternal !== undefined
        properties: ({ model: page.model })
    }

    OverlayLoader {
        objectName: "updateAlert"
        component: "UpdateAlert"
        wanted: page.model.updateOffer !== undefined
        properties: ({ model: page.model })
    }

    OverlayLoader {
        objectName: "resetAlert"
        component: "ResetAlert"
        wanted: page.model.confirmReset
        properties: ({ model: page.model })
    }

    OverlayLoader {
        objectName: "aboutView"
        component: "AboutView"
        wanted: page.showAbout
        properties: ({ page: page, storePage: page.model.storePage, emulatorSite: page.model.emulatorSite })
    }

    LazyLoader {
        objectName: "filePanel"
        component: "FilePanel"
        wanted: page.model.openPanel.isOpen
        properties: ({ panel: page.model.openPanel })
    }
}
