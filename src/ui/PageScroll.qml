// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Cartloom

/// Scrolls a page vertically when the window is too small for it, and follows the keyboard.
T.ScrollView {
    id: area

    readonly property Flickable view: contentItem as Flickable
    readonly property Item focusItem: Window.activeFocusItem
    /// How much of the page stays in view around what has the keyboard.
    readonly property real margin: 24

    function reveal(item: Item) {
        const top = item.mapToItem(view.contentItem, 0, 0).y;
        const highest = Math.max(top - margin, 0);
        const lowest = Math.min(top + item.height + margin, contentHeight) - view.height;
        view.contentY = Math.max(Math.min(view.contentY, highest), lowest);
    }

    onFocusItemChanged: activeFocus && focusItem !== area && reveal(focusItem)

    contentWidth: availableWidth

    T.ScrollBar.vertical: ThinScrollBar {
        objectName: "pageScrollBar"
        parent: area
        x: area.width - width
        height: area.height
    }
}
