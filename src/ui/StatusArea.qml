// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// How far the work that is going on has come, and the way to stop it.
Column {
    id: area

    required property AppModel model

    spacing: 6

    LinearProgressBar {
        objectName: "progressBar"
        width: parent.width
        indeterminate: area.model.fraction === undefined
        value: area.model.fraction ?? 0
        Accessible.name: area.model.stageTitle
    }

    Item {
        objectName: "statusRow"
        width: parent.width
        implicitHeight: Math.max(stageLabel.height, detailLabel.height)

        Label {
            id: stageLabel
            objectName: "stageTitle"
            anchors.verticalCenter: parent.verticalCenter
            text: area.model.stageTitle
            font: Theme.captionBold
        }

        Label {
            id: detailLabel
            objectName: "detailLine"
            anchors.left: stageLabel.right
            anchors.leftMargin: 8
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            text: area.model.detailLine
            font: Theme.caption
            color: Theme.faded(0.6)
            horizontalAlignment: Text.AlignRight
        }
    }

    PlainButton {
        objectName: "cancelButton"
        anchors.horizontalCenter: parent.horizontalCenter
        visible: area.model.canCancel
        text: "Cancel"
        onClicked: area.model.cancel()
    }
}
