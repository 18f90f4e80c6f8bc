// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// Tells assistive technology what has changed: the stage while there is one, or else the message.
Announcement {
    required property AppModel model
    required property string stageTitle

    text: stageTitle || (model.errorMessage ?? model.notice ?? "")

    Accessible.role: Accessible.AlertMessage
    Accessible.name: text
}
