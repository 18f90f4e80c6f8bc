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
    readonly property rect focusArea: activeFocus && focusItem !== page ? areaOf(focusItem)
                                                                        : Qt.rect(0, 0, 0, 0)

    function areaOf(item: Item): rect {
        return item.mapToItem(view.contentItem, 0, 0, item.width, item.height);
    }

    onFocusAreaChanged: view.contentY = ScrollPosition.showing(focusArea, margin, view.contentY, view.height,
                                                               contentHeight)
}
