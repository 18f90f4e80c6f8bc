// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// A button of an alert, drawn by its role; the default one has the keyboard when the alert appears.
PlainButton {
    id: control

    required property int role

    readonly property bool isDefault: role === AlertAction.Default

    topPadding: 6
    bottomPadding: 6
    focus: isDefault
    fillColor: isDefault ? (down ? Qt.darker(Theme.accent, 1.3) : Theme.accent)
                         : (down ? Theme.controlPressed : Theme.control)
    titleColor: role === AlertAction.Destructive ? Theme.red : Theme.text

    Accessible.defaultButton: isDefault
}
