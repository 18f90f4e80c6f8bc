// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// What is drawn around its parent while the keyboard is on it, and made only then.
Loader {
    id: ring

    /// The corner radius of what the ring goes around.
    property real innerRadius: 0

    objectName: "focusRing"
    anchors.fill: parent
    anchors.margins: -3
    active: visible
    sourceComponent: SmoothRectangle {
        radius: ring.innerRadius + 3
        strokeColor: Theme.focusRing
        strokeWidth: 2
    }
}
