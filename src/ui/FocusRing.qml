// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// What is drawn around its parent while the keyboard is on it.
Rectangle {
    /// The corner radius of what the ring goes around.
    property real innerRadius: 0
    /// The height above and below what the ring goes around.
    property real surplus: 0

    objectName: "focusRing"
    anchors.fill: parent
    anchors.margins: -4
    anchors.topMargin: surplus - 4
    anchors.bottomMargin: surplus - 4
    radius: innerRadius + 4
    color: "transparent"
    border.color: Theme.focusRing
    border.width: 2
}
