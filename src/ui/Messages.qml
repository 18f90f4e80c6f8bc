// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom
import "Excerpt.js" as Excerpt

/// The message of the last run, if there is one: an error, or else a notice.
Column {
    id: area

    required property AppModel model

    readonly property bool failed: model.errorMessage !== undefined
    readonly property bool noticed: !failed && model.notice !== undefined

    visible: failed || noticed

    ErrorBox {
        objectName: "errorBox"
        width: parent.width
        visible: area.failed
        model: area.model
    }

    Label {
        objectName: "notice"
        width: parent.width
        visible: area.noticed
        text: Excerpt.of(area.model.notice ?? "")
        font: Theme.callout
        color: Theme.faded(0.75)
        horizontalAlignment: Text.AlignHCenter
    }
}
