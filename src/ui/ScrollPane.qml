// SPDX-License-Identifier: MIT
import QtQuick

/// Scrolls what is in it vertically, when there is too little room for it. Where its edge is not the
/// window's, there must be no shapes in it: the software scene graph draws one that is scrolled out of sight
/// as a whole all the same.
FocusScope {
    id: pane

    /// What moves the content.
    readonly property alias view: flickable
    readonly property real availableWidth: width
    property alias contentHeight: flickable.contentHeight
    default property alias content: flickable.flickableData
    /// Whether what is in it has got the keyboard by being pointed at.
    property bool pointedAt: false
    /// How far the scroll bar stands outside of the pane.
    property real scrollBarOutset: 0

    function scrollBy(distance: real) {
        view.contentY = Math.max(0, Math.min(view.contentY + distance, contentHeight - view.height));
    }

    /// Scrolls as a key asks for it; says whether it is such a key.
    function scrollByKey(key: int): bool {
        const distances = {
            [Qt.Key_Up]: -contentHeight / 10,
            [Qt.Key_Down]: contentHeight / 10,
            [Qt.Key_PageUp]: -view.height * 0.9,
            [Qt.Key_PageDown]: view.height * 0.9,
            [Qt.Key_Home]: -contentHeight,
            [Qt.Key_End]: contentHeight
        };
        if (distances[key] !== undefined)
            scrollBy(distances[key]);
        return distances[key] !== undefined;
    }

    Keys.onPressed: event => event.accepted = scrollByKey(event.key)

    Flickable {
        id: flickable
        anchors.fill: parent
        contentWidth: width
        clip: true
        // Only a finger drags what it scrolls. The mouse has its wheel and the bar.
        interactive: scrollBar.useful && !mouse.active

        PointHandler {
            id: mouse
            acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad
        }
    }

    LazyLoader {
        id: scrollBar

        readonly property bool useful: flickable.height > 0 && flickable.visibleArea.heightRatio < 1

        objectName: "scrollBar"
        x: pane.width - width + pane.scrollBarOutset
        height: pane.height
        visible: useful
        component: "ThinScrollBar"
        wanted: false
        properties: ({ view: flickable })
    }

    // Not while all is still finding its place: a page that is being made is too tall for a moment.
    Timer {
        interval: 0
        running: scrollBar.useful
        onTriggered: scrollBar.wanted = true
    }
}
