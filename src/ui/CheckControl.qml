// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Shapes
import Cartloom

/// A check box with its label. Whoever shows it binds "checked", and changes what that is bound to when it is
/// clicked.
ButtonBase {
    id: control

    required property bool checked

    readonly property real spacing: 6

    font: Theme.body
    contentItem: Label {
        leftPadding: indicator.width + control.spacing
        text: control.text
        font: control.font
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true

        SmoothRectangle {
            id: indicator
            objectName: "checkIndicator"
            anchors.verticalCenter: parent.verticalCenter
            width: Theme.scaled(14)
            height: width
            radius: width / 4
            fillColor: control.checked ? Theme.accent : control.down ? Theme.controlPressed : Theme.control
            strokeColor: control.checked ? Theme.accent : Theme.scrollHandle
            strokeWidth: 1

            Shape {
                objectName: "checkMark"
                anchors.centerIn: parent
                width: 14
                height: 14
                scale: parent.width / width
                visible: control.checked

                ShapePath {
                    fillColor: "transparent"
                    strokeColor: Theme.text
                    strokeWidth: 2
                    capStyle: ShapePath.RoundCap
                    joinStyle: ShapePath.RoundJoin
                    startX: 3.5
                    startY: 7.2
                    PathLine {
                        x: 6
                        y: 10
                    }
                    PathLine {
                        x: 10.5
                        y: 4
                    }
                }
            }
        }
    }

    FocusRing {
        visible: control.visualFocus
        innerRadius: 3
    }

    Accessible.role: Accessible.CheckBox
    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onToggleAction: control.enabled && control.clicked()
}
