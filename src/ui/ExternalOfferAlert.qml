// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// Offers a copy of the emulator that was found on the machine.
AlertDialog {
    id: alert

    required property AppModel model

    /// The copy that was offered when the alert appeared. What is shown and what is accepted is this one.
    property string app

    title: "Ares is already on this Mac"
    message: "Found " + app + ". Use it instead of downloading about 80 MB?"
    onAboutToShow: app = model.offerExternal
    onAnswered: model.clearOfferExternal()

    AlertAction {
        text: "Use that one"
        role: AlertAction.Default
        onTriggered: alert.model.useExistingAres(alert.app)
    }
    AlertAction {
        text: "Download Ares"
        onTriggered: alert.model.downloadAresInstead()
    }
    AlertAction {
        text: "Cancel"
        role: AlertAction.Cancel
        onTriggered: alert.model.dismissOffer()
    }
}
