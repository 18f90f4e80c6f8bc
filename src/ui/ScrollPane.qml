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
    /// How far the scroll bar stands outside of the pane.
    property real scrollBarOutset: 0

    function scrollBy(distance: real) {
        view.contentY = Math.max(0, Math.min(view.contentY + distance, contentHeight - view.height));
    }

    Keys.onUpPressed: scrollBy(-contentHeight / 10)
    Keys.onDownPressed: scrollBy(contentHeight / 10)

    Flickable {
        id: flickable
        anchors.fill: parent
        contentWidth: width
        clip: true
    }

    LazyLoader {
        id: scrollBar

        readonly property bool useful: flickable.visibleArea.heightRatio < 1

        // Not before all that was changed at once has its new place: a page that is being made has none.
        function makeIfUseful() {
            wanted = wanted || useful;
        }

        objectName: "scrollBar"
        x: pane.width - width + pane.scrollBarOutset
        height: pane.height
        visible: useful
        component: "ThinScrollBar"
        wanted: false
        onUsefulChanged: Qt.callLater(makeIfUseful)
        properties: ({ view: flickable })
    }
}
