// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// A button of an alert, drawn by its role.
PlainButton {
    id: control

    required property int role

    readonly property bool isDefault: role === AlertAction.Default

    topPadding: 6
    bottomPadding: 6
    fillColor: isDefault ? (down ? Theme.accentPressed : Theme.accent)
                         : (down ? Theme.controlPressed : Theme.control)
    titleColor: role === AlertAction.Destructive ? Theme.red : Theme.text

    Accessible.defaultButton: isDefault
}
