// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// A button of an alert, drawn by its role.
PlainButton {
    id: control

    required property int role

    readonly property bool isDefault: role === AlertAction.Default
    readonly property bool destroys: role === AlertAction.Destructive

    topPadding: 6
    bottomPadding: 6
    fillColor: isDefault ? (down ? Theme.accentPressed : Theme.accent)
                         : destroys ? Theme.tinted(Theme.red, down ? 0.3 : 0.14)
                                    : (down ? Theme.controlPressed : Theme.control)
    titleColor: destroys ? Theme.red : Theme.text

    Accessible.defaultButton: isDefault
}
