// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T

/// Scrolls what is in it vertically, when there is too little room for it. Where its edge is not the
/// window's, there must be no shapes in it: the software scene graph draws one that is scrolled out of sight
/// as a whole all the same.
T.ScrollView {
    id: pane

    /// What moves the content. That it is read makes it exist in time: the scroll bar never learns of a view
    /// that is made only when there is something in it.
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
