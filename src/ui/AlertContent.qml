// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// Title, message and buttons of an alert, one under the other. A message too long for the room scrolls.
FocusScope {
    id: content

    required property string title
    required property string message
    required property var actions
    /// The height that the whole alert may take, with its padding of 20.
    required property real room

    readonly property real roomForMessage: room - 40 - titleLabel.height - buttons.height - 28

    focus: true
    implicitHeight: titleLabel.height + 8 + messageArea.height + 20 + buttons.height
    // The arrow keys scroll a message that is too long.
    Keys.forwardTo: [messageArea]

    Accessible.role: Accessible.AlertMessage
    Accessible.name: title
    Accessible.description: message

    Label {
        id: titleLabel
        objectName: "alertTitle"
        width: parent.width
        text: content.title
        font: Theme.headline
        horizontalAlignment: Text.AlignHCenter
    }

    ScrollPane {
        id: messageArea
        objectName: "alertMessageArea"
        anchors.top: titleLabel.bottom
        anchors.topMargin: 8
        width: parent.width
        height: Math.min(messageLabel.implicitHeight, Math.max(content.roomForMessage, 0))
        contentHeight: messageLabel.implicitHeight
        scrollBarOutset: 12

        Label {
            id: messageLabel
            objectName: "alertMessage"
            width: messageArea.availableWidth
            text: content.message
            font: Theme.callout
            color: Theme.faded(0.85)
            horizontalAlignment: Text.AlignHCenter
        }
    }

    Column {
        id: buttons
        objectName: "alertButtons"
        anchors.bottom: parent.bottom
        width: parent.width
        spacing: 8

        Repeater {
            model: content.actions

            AlertButton {
                required property AlertAction modelData

                text: modelData.text
                onClicked: modelData.trigger()
                role: modelData.role
                focus: modelData.focused
                width: parent.width
            }
        }
    }
}
