// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Cartloom

/// Scrolls a page that is too tall for the window, and follows the keyboard focus.
ScrollPane {
    id: page

    readonly property Item focusItem: Window.activeFocusItem
    /// The height that stays in view above and below the focused item.
    readonly property real margin: 24

    /// The area of the focused item on the page; empty while there is nothing to follow.
    readonly property rect focusArea: activeFocus && focusItem !== page ? areaOf(focusItem)
                                                                        : Qt.rect(0, 0, 0, 0)

    /// The area of an item, or of the pane that scrolls it. Empty for an item focused with the pointer: it must
    /// not move away from under it.
    function areaOf(item: Item): rect {
        const reason = (item as T.Control)?.focusReason ?? (item as T.TextArea)?.focusReason;
        let shown = item;
        for (let above = item.parent; above && above !== view.contentItem; above = above.parent)
            shown = above instanceof ScrollPane ? above : shown;
        return reason === Qt.MouseFocusReason ? Qt.rect(0, 0, 0, 0)
                                              : shown.mapToItem(view.contentItem, 0, 0, shown.width, shown.height);
    }

    onFocusAreaChanged: {
        const shown = Math.max(Math.min(view.contentY, focusArea.top - margin), focusArea.bottom + margin - height);
        if (focusArea.height > 0)
            view.contentY = Math.max(0, Math.min(shown, contentHeight - height));
    }
}
