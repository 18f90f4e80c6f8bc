// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Cartloom

/// A test of the page: each test function begins with a new model and a new page, in a window of 480 by 640.
TestCase {
    id: testCase

    property ContentView page
    readonly property AppModel model: probe.model

    function init() {
        renew();
    }

    function renew() {
        failOnWarning(/./);
        probe.renew();
        page = createTemporaryObject(pageComponent, testCase, { model: probe.model });
        verify(page);
        waitForRendering(page);
    }

    /// An element of the page, by name.
    function item(name) {
        const found = findChild(page, name);
        verify(found, name);
        return found;
    }

    /// Whether an element of the page is there and can be seen.
    function shows(name) {
        return findChild(page, name)?.visible ?? false;
    }

    /// An alert or the sheet, by name; null while it is closed.
    function popup(name) {
        return item(name).item;
    }

    /// An element of an alert.
    function alertItem(name, alert = "externalOfferAlert") {
        const found = findChild(popup(alert).contentItem, name);
        verify(found, name);
        return found;
    }

    /// The buttons of an alert, from top to bottom.
    function alertButtons(alert = "externalOfferAlert") {
        waitForRendering(page);
        return Array.from(alertItem("alertButtons", alert).children)
            .filter(child => child.text !== undefined).sort((a, b) => a.y - b.y);
    }

    function alertButton(text, alert = "externalOfferAlert") {
        return alertButtons(alert).find(candidate => candidate.text === text);
    }

    /// Where an element lies on the page.
    function place(name) {
        const found = item(name);
        return found.mapToItem(page, 0, 0, found.width, found.height);
    }

    /// The names of the page's elements that can be seen, from top to bottom.
    function elements() {
        return Array.from(item("pageColumn").children)
            .filter(child => child.visible && child.height > 0)
            .sort((a, b) => a.y - b.y)
            .map(child => child.objectName);
    }

    /// All items below one, it included, of which something is true.
    function itemsBelow(top, condition) {
        const found = condition(top) ? [top] : [];
        return Array.from(top.children).reduce((all, child) => all.concat(itemsBelow(child, condition)),
                                               found);
    }

    function focusedItem() {
        return page.Window.window.activeFocusItem;
    }

    /// Presses Tab and says where that leads.
    function tab(modifiers = Qt.NoModifier) {
        keyClick(modifiers === Qt.ShiftModifier ? Qt.Key_Backtab : Qt.Key_Tab, modifiers);
        return focusedItem().objectName;
    }

    function compareColor(actual, expected, opacity) {
        // A text keeps its colour in eight bits a channel.
        compare(String(Qt.rgba(actual.r, actual.g, actual.b, 1)), expected);
        fuzzyCompare(actual.a, opacity, 0.003);
    }

    function verifyMonospaced(font) {
        metrics.font = font;
        compare(metrics.advanceWidth("iiii"), metrics.advanceWidth("MMMM"));
    }

    FontMetrics {
        id: metrics
    }

    visible: true
    width: 480
    height: 640
    when: windowShown

    Component {
        id: pageComponent

        ContentView {
            width: 480
            height: 640
        }
    }
}
