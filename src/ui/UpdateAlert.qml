// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// Offers a release that is newer than the installed one.
AlertDialog {
    id: alert

    required property AppModel model

    /// The release that was offered when the alert appeared. What is shown and what is installed is this one.
    property var release

    /// Hands a copy on; the model's field would go on following the model.
    signal presented(offered: var)

    title: "A newer Ares is available"
    message: "Version " + (release?.tagName ?? "")
             + " can be downloaded. Your current copy is kept until the new one works."
    onAboutToShow: presented(model.updateOffer)
    onPresented: offered => release = offered
    onAnswered: model.clearUpdateOffer()

    AlertAction {
        text: "Update"
        role: AlertAction.Default
        onTriggered: alert.model.installUpdate(alert.release)
    }
    AlertAction {
        text: "Not now"
        role: AlertAction.Cancel
    }
}
