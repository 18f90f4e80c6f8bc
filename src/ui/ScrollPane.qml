// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T

/// Scrolls what is in it vertically, when there is too little room for it.
T.ScrollView {
    id: pane

    /// What moves the content. That it is read here makes it exist before the scroll bar, which would not find
    /// it later.
    readonly property Flickable view: contentItem as Flickable
    /// How far the scroll bar stands outside of the pane.
    property real scrollBarOutset: 0

    contentWidth: availableWidth
    Component.onCompleted: view.clip = true

    T.ScrollBar.vertical: ThinScrollBar {
        objectName: "scrollBar"
        parent: pane
        x: pane.width - width + pane.scrollBarOutset
        height: pane.height
    }
}
