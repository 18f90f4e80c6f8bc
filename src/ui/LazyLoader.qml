// SPDX-License-Identifier: MIT
import QtQuick

/// Makes what is in it when it is first wanted, and keeps it.
Loader {
    property bool wanted: false

    active: false
    onWantedChanged: active = active || wanted
}
