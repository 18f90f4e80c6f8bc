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
    fill: isDefault ? Theme.defaultFill : destroys ? Theme.destructiveFill : Theme.ordinaryFill

    Accessible.defaultButton: isDefault
}
