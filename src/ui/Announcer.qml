// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// Tells assistive technology what has changed. Nothing of it can be seen.
/// A screen reader speaks an alert when it appears, so that each new text appears anew.
Item {
    required property AppModel model
    required property string stageTitle

    readonly property string message: model.errorMessage ?? model.notice ?? ""
    readonly property string announcement: stageTitle || message

    function appear() {
        visible = false;
        visible = announcement !== "";
    }

    width: 1
    height: 1
    visible: false
    onAnnouncementChanged: appear()

    Accessible.role: Accessible.AlertMessage
    Accessible.name: announcement
}
