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

    /// The area of an item, or of the pane that scrolls it; nothing for what was pointed at, which must not move
    /// away from under the pointer.
    function areaOf(item: Item): rect {
        let shown = item;
        for (let above = item.parent; above && above !== view.contentItem; above = above.parent)
            shown = above instanceof ScrollPane ? above : shown;
        const pointedAt = (shown as ButtonBase)?.pointedAt || (shown as ScrollPane)?.pointedAt;
        return pointedAt ? Qt.rect(0, 0, 0, 0)
                         : shown.mapToItem(view.contentItem, 0, 0, shown.width, shown.height);
    }

    onFocusAreaChanged: view.contentY = ScrollPosition.showing(focusArea, margin, view.contentY, view.height,
                                                               contentHeight)
}
