// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Cartloom

/// A bar that fills from left to right, or in which a piece travels while the end is unknown.
T.ProgressBar {
    id: control

    /// Less than half the height: a scale factor may give that an odd number of dots, and then the corners of
    /// plain rectangles would not meet.
    readonly property real cornerRadius: 2.5

    implicitWidth: implicitContentWidth
    implicitHeight: implicitContentHeight

    contentItem: Rectangle {
        implicitHeight: 6
        radius: control.cornerRadius
        color: Theme.track

        Rectangle {
            objectName: "progressFill"
            visible: !control.indeterminate && width > 0
            width: control.visualPosition * parent.width
            height: parent.height
            radius: control.cornerRadius
            color: Theme.progress
        }

        Rectangle {
            objectName: "progressTraveller"
            visible: control.indeterminate
            width: parent.width / 4
            height: parent.height
            radius: control.cornerRadius
            color: Theme.progress

            SequentialAnimation on x {
                objectName: "progressTravel"
                loops: Animation.Infinite
                running: control.visible && control.indeterminate

                NumberAnimation {
                    from: 0
                    to: control.width * 3 / 4
                    duration: 900
                    easing.type: Easing.InOutSine
                }
                NumberAnimation {
                    from: control.width * 3 / 4
                    to: 0
                    duration: 900
                    easing.type: Easing.InOutSine
                }
            }
        }
    }

    Accessible.role: Accessible.ProgressBar
    Accessible.description: indeterminate ? "" : Math.round(value * 100) + "%"
}
