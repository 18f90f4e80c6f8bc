// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Cartloom

/// Scrolls its content vertically, with a bar over the edge. Set contentHeight. Keep shapes out of a pane whose
/// edge is not the window's: the software scene graph draws a shape whole even if it is scrolled out of sight.
T.ScrollView {
    id: pane

    readonly property Flickable view: contentItem as Flickable
    /// The distance of the scroll bar from the pane's right edge, outwards.
    property real scrollBarOutset: 0

    /// Scrolls by a part of the view's height.
    function scrollBy(pages: real) {
        const end = Math.max(contentHeight - height, 0);
        view.contentY = Math.max(0, Math.min(view.contentY + pages * height, end));
    }

    contentWidth: availableWidth
    // A pane that fits leaves the wheel to the one around it.
    wheelEnabled: scrollBar.size < 1
    // A finger does not drag what fits.
    Component.onCompleted: view.flickableDirection = Flickable.AutoFlickIfNeeded

    // The toolkit scrolls by the arrow keys only.
    Keys.onPressed: event => {
        const pages = {
            [Qt.Key_PageUp]: -0.9,
            [Qt.Key_PageDown]: 0.9,
            [Qt.Key_Home]: -Infinity,
            [Qt.Key_End]: Infinity
        }[event.key];
        event.accepted = pages !== undefined;
        if (event.accepted)
            scrollBy(pages);
    }

    T.ScrollBar.vertical: T.ScrollBar {
        id: scrollBar
        objectName: "scrollBar"
        parent: pane
        x: pane.width - width + pane.scrollBarOutset
        height: pane.height
        implicitWidth: implicitContentWidth + leftPadding + rightPadding
        implicitHeight: implicitContentHeight + topPadding + bottomPadding
        padding: 2
        minimumSize: 0.1
        visible: size < 1
        hoverEnabled: true

        contentItem: Rectangle {
            implicitWidth: 6
            implicitHeight: 6
            // Less than half the width: a scale factor may give that an odd number of dots.
            radius: 2.5
            color: scrollBar.pressed ? Theme.text : scrollBar.hovered ? Theme.scrollHandleHovered : Theme.scrollHandle
        }
    }
}
