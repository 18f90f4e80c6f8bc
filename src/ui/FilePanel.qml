// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Dialogs
import Cartloom

/// The system's own panel that asks for one existing file.
FileDialog {
    required property OpenPanel panel

    title: panel.title
    fileMode: FileDialog.OpenFile
    modality: Qt.ApplicationModal
    // There is no other place for the message.
    nameFilters: panel.nameFilters
    visible: panel.isOpen
    onAccepted: panel.confirm(selectedFile)
    onRejected: panel.dismiss()
}
