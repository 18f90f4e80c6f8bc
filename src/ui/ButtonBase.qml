// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T

/// What all buttons have in common: size from their content, the keys that press them, name and role.
T.Button {
    id: control

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding

    function activate() {
        action ? action.trigger() : clicked();
    }

    // A key that is held down presses once. The space bar is the template's.
    Keys.onReturnPressed: event => event.isAutoRepeat || control.activate()
    Keys.onEnterPressed: event => event.isAutoRepeat || control.activate()

    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.onPressAction: control.enabled && control.activate()
}
