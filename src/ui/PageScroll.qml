// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// Scrolls a page that is too tall for the window, and follows the keyboard.
ScrollPane {
    id: page

    readonly property Item focusItem: Window.activeFocusItem
    /// How much of the page stays in view around what has the keyboard.
    readonly property real margin: 24

    function reveal(item: Item) {
        const top = item.mapToItem(view.contentItem, 0, 0).y;
        const highest = Math.max(top - margin, 0);
        const lowest = Math.min(top + item.height + margin, contentHeight) - view.height;
        view.contentY = Math.max(Math.min(view.contentY, highest), lowest);
    }

    onFocusItemChanged: activeFocus && focusItem !== page && reveal(focusItem)
}
