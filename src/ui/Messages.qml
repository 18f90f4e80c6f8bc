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

    // The font of its details is not looked for at the start. Qt 6.5 can tell qmllint that "area" is bound.
    // qmllint disable unqualified
    Loader {
        objectName: "errorBox"
        width: parent.width
        active: area.failed
        visible: active
        sourceComponent: ErrorBox {
            model: area.model
        }
    }
    // qmllint enable unqualified

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
