// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Cartloom

/// A scroll bar that lies over the edge of what it scrolls.
T.ScrollBar {
    id: control

    required property Flickable view

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    padding: 2
    minimumSize: 0.1
    size: view.visibleArea.heightRatio
    position: view.visibleArea.yPosition
    onPositionChanged: pressed && (view.contentY = position * view.contentHeight)

    contentItem: Rectangle {
        implicitWidth: 6
        implicitHeight: 6
        // No more than what is left of half the width when a scale factor gives an odd number of dots.
        radius: 2.5
        color: control.pressed ? Theme.text : Theme.scrollHandle
    }
}
