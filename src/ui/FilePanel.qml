// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Dialogs
import Cartloom

/// The system's own panel that asks for one existing file.
FileDialog {
    id: dialog

    required property OpenPanel panel

    // Not every system ignores the case of an extension.
    readonly property string patterns: panel.extensions.concat(panel.extensions.map(e => e.toUpperCase())) // qmllint disable
                                                       .map(e => "*." + e).join(" ")

    title: panel.title
    fileMode: FileDialog.OpenFile
    modality: Qt.ApplicationModal
    // There is no other place for the message.
    nameFilters: panel.extensions.length > 0 ? [panel.message + " (" + patterns + ")"] : []
    onAccepted: panel.confirm(selectedFile)
    onRejected: panel.dismiss()
    Component.onCompleted: open()
}
