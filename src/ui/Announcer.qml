// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom
import "Excerpt.js" as Excerpt

/// Tells assistive technology what has changed: the stage while there is one, or else the message.
Announcement {
    required property AppModel model

    text: model.stageTitle || Excerpt.of(model.errorMessage ?? model.notice ?? "")

    Accessible.role: Accessible.AlertMessage
    Accessible.name: text
}
