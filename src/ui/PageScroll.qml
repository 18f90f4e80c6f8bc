// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// Scrolls a page that is too tall for the window, and follows the keyboard.
ScrollPane {
    id: page

    readonly property Item focusItem: Window.activeFocusItem
    /// How much of the page stays in view around what has the keyboard.
    readonly property real margin: 24

    /// Where it is on the page; nothing while it is elsewhere.
    readonly property rect focusArea: activeFocus && focusItem !== page ? areaOf(focusItem) : Qt.rect(0, 0, 0, 0)

    function areaOf(item: Item): rect {
        return item.mapToItem(view.contentItem, 0, 0, item.width, item.height);
    }

    function within(y: real): real {
        return Math.max(0, Math.min(y, contentHeight - view.height));
    }

    onFocusAreaChanged: {
        if (focusArea.height > 0)
            view.contentY = Math.max(Math.min(view.contentY, within(focusArea.top - margin)),
                                     within(focusArea.bottom + margin - view.height));
    }
}
