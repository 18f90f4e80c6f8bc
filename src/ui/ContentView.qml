// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// The whole page of the window: what the model's fields say, and controls that call its actions.
Rectangle {
    id: page

    required property AppModel model

    /// True while something that the player opened lies over the page. What the model asks waits until it is closed.
    readonly property bool covered: showAbout || model.confirmReset || model.openPanel.isOpen
    readonly property bool asking: covered || model.offerExternal !== undefined || model.updateOffer !== undefined
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
            }

            StatusArea {
                objectName: "statusArea"
                width: column.lineWidth
                visible: page.model.showsProgress
                model: page.model
            }

            Messages {
                objectName: "messages"
                width: column.lineWidth
                model: page.model
            }

            PlainButton {
                objectName: "openROM"
                anchors.horizontalCenter: parent.horizontalCenter
                maximumWidth: column.lineWidth
                text: "Open a ROM file (.z64 / .v64)..."
                enabled: page.model.atRest
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
        enabled: page.model.atRest && !page.asking
        model: page.model
    }

    // Overlays exist only while they are open: they would be a fifth of the start, and Qt 6.4 may draw a shape that a
    // window takes in twice from a freed path. Qt 6.5 can tell qmllint that "page" is bound.
    // qmllint disable unqualified
    Loader {
        objectName: "externalOfferAlert"
        active: page.model.offerExternal !== undefined && !page.covered
        sourceComponent: ExternalOfferAlert {
            model: page.model
        }
    }

    Loader {
        objectName: "updateAlert"
        active: page.model.updateOffer !== undefined && page.model.offerExternal === undefined && !page.covered
        sourceComponent: UpdateAlert {
            model: page.model
        }
    }

    Loader {
        objectName: "resetAlert"
        active: page.model.confirmReset
        sourceComponent: ResetAlert {
            model: page.model
        }
    }

    Loader {
        objectName: "aboutView"
        active: page.showAbout
        sourceComponent: AboutView {
            storePage: page.model.storePage
            emulatorSite: page.model.emulatorSite
            onClosed: page.showAbout = false
        }
    }

    // Named by its file, not its type: the toolkit's dialogs would be loaded at the start.
    Loader {
        objectName: "filePanel"
        active: page.model.openPanel.isOpen
        onActiveChanged: if (active) setSource("FilePanel.qml", {panel: page.model.openPanel})
    }
    // qmllint enable unqualified
}
