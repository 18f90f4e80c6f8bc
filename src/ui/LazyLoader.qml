// SPDX-License-Identifier: MIT
import QtQuick

/// Makes a component when it is first wanted, and keeps it.
Loader {
    id: loader

    required property string component
    required property bool wanted
    /// What the component requires.
    property var properties: ({})

    onWantedChanged: wanted && status === Loader.Null && setSource(component + ".qml", properties)
}
