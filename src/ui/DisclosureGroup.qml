// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Shapes
import Cartloom

/// Content that is shown on request, under the label that asks for it.
Column {
    id: group

    required property string label
    property bool expanded: false
    default property alias content: body.data

    spacing: 6

    ButtonBase {
        id: toggle
        objectName: "disclosureButton"
        text: group.label
        font: Theme.body
        leftInset: -4
        rightInset: -4
        onClicked: group.expanded = !group.expanded

        // Not the toolkit's "checkable", which would make it a check box.
        Accessible.checkable: true
        Accessible.checked: group.expanded

        background: Rectangle {
            radius: toggle.cornerRadius
            color: toggle.fillNow(Theme.bareFill)
        }
        contentItem: Row {
            spacing: 6

            Shape {
                objectName: "disclosureTriangle"
                anchors.verticalCenter: parent.verticalCenter
                width: 10
                height: 10
                scale: Theme.textScale
                rotation: group.expanded ? 90 : 0

                ShapePath {
                    fillColor: "transparent"
                    strokeColor: Theme.text
                    strokeWidth: 1.6
                    capStyle: ShapePath.RoundCap
                    joinStyle: ShapePath.RoundJoin
                    startX: 3.2
                    startY: 1.5
                    PathLine {
                        x: 6.8
                        y: 5
                    }
                    PathLine {
                        x: 3.2
                        y: 8.5
                    }
                }
            }

            Label {
                width: Math.min(implicitWidth, toggle.maximumWidth - 16)
                anchors.verticalCenter: parent.verticalCenter
                text: toggle.text
                font: toggle.font
                Accessible.ignored: true
            }
        }
    }

    Column {
        id: body
        width: parent.width
        visible: group.expanded
    }
}
