// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Cartloom

/// What scrolls a page that is too tall, and what does not.
PageCase {
    name: "Scroll"

    property Flickable view
    property Item bar

    function init() {
        renew();
        view = item("pageScroll").view;
        bar = null;
    }

    /// Makes the page too tall for the window.
    function fill() {
        probe.put({ errorMessage: "A line.\n".repeat(60) });
        bar = findChild(item("pageScroll"), "scrollBar");
        tryVerify(() => bar.visible);
        // That lays it out.
        grabImage(page);
    }

    /// Moves a finger up from an element until something has come of it, or it leaves the page.
    function dragUp(name, done) {
        const start = item(name).mapToItem(page, 50, 10);
        const touch = touchEvent(page);
        let y = start.y;
        touch.press(0, page, start.x, y).commit();
        tryVerify(() => {
            y -= 10;
            touch.move(0, page, start.x, y).commit();
            return y < 0 || done();
        });
        touch.release(0, page, start.x, y).commit();
    }

    /// Scrolls the page so that only the upper half of an element can be seen.
    function halve(name) {
        const element = item(name);
        view.contentY += element.mapToItem(page, 0, element.height / 2).y - page.height;
        grabImage(page);
        return element;
    }

    function test_thePageDoesNotMoveAwayFromUnderThePointer() {
        fill();
        const box = halve("fullscreenToggle");
        const before = view.contentY;
        verify(before > 0);
        mousePress(box, 10, 2);
        compare(view.contentY, before);
        mouseMove(box, 11, 2);
        mouseRelease(box, 11, 2);
        verify(model.fullscreen);
        compare(view.contentY, before);
        compare(tab(), "showInFinder");
        verify(view.contentY > before);
    }

    function test_longDetailsAreFollowedAsThePaneTheyAreIn() {
        probe.put({ errorMessage: "A line.\n".repeat(30), errorDetails: "A detail.\n".repeat(200) });
        grabImage(page);
        item("disclosureButton").clicked();
        grabImage(page);
        const pane = item("detailsPane");
        item("detailsText").forceActiveFocus(Qt.TabFocusReason);
        const top = () => pane.mapToItem(page, 0, 0).y;
        verify(top() >= 0 && top() + pane.height <= page.height, top());
        const before = view.contentY = view.contentY - 50;
        item("mainButton").focus = true;
        view.contentY = before;
        grabImage(page);
        mouseClick(item("detailsText"), 5, 5);
        verify(item("detailsText").activeFocus);
        compare(view.contentY, before);
    }

    function test_theMouseDoesNotDragThePage() {
        fill();
        mouseDrag(page, 240, 400, 0, -200);
        mouseDrag(item("mainButton"), 50, 20, 0, -150);
        compare(view.contentY, 0);
        verify(!probe.hasTask());
        mouseWheel(page, 240, 300, 0, -120);
        tryVerify(() => view.contentY > 0);
    }

    function test_aFingerDragsThePage_data() {
        return [{ tag: "on a text", name: "blurb" }, { tag: "on a button", name: "mainButton" }];
    }

    function test_aFingerDragsThePage(row) {
        fill();
        dragUp(row.name, () => view.contentY > 0);
        verify(view.contentY > 0);
        verify(!probe.hasTask());
    }

    function test_theKeyboardScrollsThePage() {
        fill();
        item("pageScroll").forceActiveFocus(Qt.TabFocusReason);
        const end = view.contentHeight - view.height;
        keyClick(Qt.Key_Down);
        fuzzyCompare(view.contentY, view.contentHeight / 10, 1);
        keyClick(Qt.Key_Up);
        compare(view.contentY, 0);
        keyClick(Qt.Key_PageDown);
        fuzzyCompare(view.contentY, Math.min(end, view.height * 0.9), 1);
        keyClick(Qt.Key_End);
        fuzzyCompare(view.contentY, end, 1);
        keyClick(Qt.Key_PageUp);
        fuzzyCompare(view.contentY, Math.max(0, end - view.height * 0.9), 1);
        keyClick(Qt.Key_Home);
        compare(view.contentY, 0);
    }

    function test_aPageThatFitsIsNotDragged() {
        dragUp("blurb", () => view.contentY !== 0);
        compare(view.contentY, 0);
    }

    function test_theBarIsDraggedWithTheMouse() {
        fill();
        mousePress(bar, bar.width / 2, 20);
        verify(bar.pressed);
        mouseMove(bar, bar.width / 2, 120);
        tryVerify(() => view.contentY > 0);
        fuzzyCompare(view.contentY / view.contentHeight, 100 / (bar.height - 2 * bar.padding), 0.001);
        mouseMove(bar, bar.width / 2, 5000);
        mouseRelease(bar, bar.width / 2, 5000);
        fuzzyCompare(view.contentY, view.contentHeight - view.height, 1);
        fuzzyCompare(bar.position, 1 - bar.size, 0.01);
        view.contentY = 0;
        compare(bar.position, 0);
    }

    function test_theWheelScrollsOverTheBarAsWell() {
        fill();
        mouseWheel(bar, bar.width / 2, 300, 0, -120);
        tryVerify(() => view.contentY > 0);
    }

    function test_aPageThatFitsAgainIsAllThere() {
        fill();
        view.contentY = 300;
        probe.put({ errorMessage: undefined });
        tryVerify(() => !bar.visible);
        compare(view.contentY, 0);
    }
}
