// SPDX-License-Identifier: MIT
import QtQuick

/// Makes what lies over the page while it is wanted, and only then: a shape that a window takes in for a
/// second time may be drawn from a path that is no longer there.
Loader {
    required property string component
    required property bool wanted
    /// What the component requires.
    required property var properties

    active: wanted
    Component.onCompleted: setSource(component + ".qml", properties)
}
