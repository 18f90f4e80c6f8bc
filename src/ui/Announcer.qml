// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// Tells assistive technology what has changed. Nothing of it can be seen.
Item {
    required property AppModel model
    required property string stageTitle

    readonly property string message: model.errorMessage ?? model.notice ?? ""

    width: 1
    height: 1

    Accessible.role: Accessible.AlertMessage
    Accessible.name: stageTitle || message
}
