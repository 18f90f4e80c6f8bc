// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Cartloom

/// What presses a button, and what does not.
PageCase {
    id: testCase
    name: "Buttons"

    property PlainButton button
    property SignalSpy presses

    function init() {
        renew();
        button = createTemporaryObject(buttonComponent, testCase);
        presses = createTemporaryObject(spyComponent, testCase, { target: button });
    }

    function ring(name) {
        return findChild(item(name), "focusRing");
    }

    function test_aPressThatIsDraggedOffTheButtonDoesNothing() {
        mousePress(button);
        verify(button.down);
        verify(probe.accessible(button).pressed);
        mouseMove(button, 50, -100);
        verify(!button.down);
        mouseRelease(button, 50, -100);
        compare(presses.count, 0);
        mousePress(button);
        mouseMove(button, 50, -100);
        mouseMove(button, 50, 10);
        verify(button.down);
        mouseRelease(button);
        compare(presses.count, 1);
    }

    function test_aButtonUnderThePointerIsLighter() {
        const colour = () => String(grabImage(button).pixel(4, 10));
        mouseMove(button, 50, -100);
        const before = colour();
        mouseMove(button, 50, 10);
        tryVerify(() => colour() !== before);
        mouseMove(button, 50, -100);
        tryVerify(() => colour() === before);
    }

    function test_onlyTheLeftMouseButtonPresses_data() {
        return [{ tag: "right", which: Qt.RightButton }, { tag: "middle", which: Qt.MiddleButton }];
    }

    function test_onlyTheLeftMouseButtonPresses(row) {
        mousePress(button, 50, 10, row.which);
        verify(!button.down);
        mouseRelease(button, 50, 10, row.which);
        compare(presses.count, 0);
        verify(!button.activeFocus);
    }

    function test_twoQuickPressesAreTwo() {
        mouseDoubleClickSequence(button);
        compare(presses.count, 2);
    }

    function test_aFingerPresses() {
        const touch = touchEvent(button);
        touch.press(0, button, 50, 10).commit();
        verify(button.down);
        touch.release(0, button, 50, 10).commit();
        compare(presses.count, 1);
    }

    function test_spaceActsWhenItIsLetGo() {
        button.forceActiveFocus(Qt.TabFocusReason);
        keyPress(Qt.Key_Space);
        verify(button.down);
        compare(presses.count, 0);
        keyRelease(Qt.Key_Space);
        verify(!button.down);
        compare(presses.count, 1);
    }

    function test_spaceThatIsLetGoElsewhereDoesNothing() {
        button.forceActiveFocus(Qt.TabFocusReason);
        keyPress(Qt.Key_Space);
        item("mainButton").forceActiveFocus(Qt.TabFocusReason);
        verify(!button.down);
        keyRelease(Qt.Key_Space);
        compare(presses.count, 0);
        verify(!probe.hasTask());
    }

    function test_aKeyThatIsHeldDownPressesOnce_data() {
        return [{ tag: "Space", key: Qt.Key_Space }, { tag: "Return", key: Qt.Key_Return },
                { tag: "Enter", key: Qt.Key_Enter }];
    }

    function test_aKeyThatIsHeldDownPressesOnce(row) {
        button.forceActiveFocus(Qt.TabFocusReason);
        probe.hold(page.Window.window, row.key);
        compare(presses.count, 1);
    }

    function test_aKeyThatWasDownBeforePressesNothing_data() {
        return test_aKeyThatIsHeldDownPressesOnce_data();
    }

    function test_aKeyThatWasDownBeforePressesNothing(row) {
        button.forceActiveFocus(Qt.TabFocusReason);
        probe.hold(page.Window.window, row.key, true);
        compare(presses.count, 0);
    }

    function test_theKeyThatOpensTheSheetDoesNotCloseIt() {
        item("about").forceActiveFocus(Qt.TabFocusReason);
        probe.hold(page.Window.window, Qt.Key_Return);
        verify(page.showAbout);
        keyClick(Qt.Key_Return);
        verify(!page.showAbout);
    }

    function test_assistiveTechnologyPressesOnce() {
        verify(probe.act(button, "Press"));
        compare(presses.count, 1);
        verify(probe.act(item("fullscreenToggle"), "Press"));
        verify(model.fullscreen);
    }

    function test_aDisabledButtonCannotBePressed() {
        button.enabled = false;
        mouseClick(button);
        probe.act(button, "Press");
        compare(presses.count, 0);
        const toggle = item("fullscreenToggle");
        toggle.enabled = false;
        probe.act(toggle, "Toggle");
        probe.act(toggle, "Press");
        verify(!model.fullscreen);
    }

    function test_whatIsDisabledWhileItIsHeldIsLetGo() {
        mousePress(button);
        button.enabled = false;
        verify(!button.down);
        button.enabled = true;
        mouseRelease(button);
        button.forceActiveFocus(Qt.TabFocusReason);
        keyPress(Qt.Key_Space);
        button.enabled = false;
        button.enabled = true;
        verify(!button.down);
        keyRelease(Qt.Key_Space);
        compare(presses.count, 0);
    }

    function test_whatIsPointedAtHasTheKeyboardWithoutARing() {
        item("reset").focusPolicy = Qt.StrongFocus;
        mouseClick(item("reset"));
        tryVerify(() => popup("resetAlert")?.opened);
        mouseClick(alertButton("Cancel", "resetAlert"));
        tryVerify(() => item("reset").activeFocus);
        verify(!ring("reset").visible);
        compare(tab(Qt.ShiftModifier), "checkForUpdate");
        verify(ring("checkForUpdate").visible);
        compare(tab(), "reset");
        verify(ring("reset").visible);
    }

    function test_theRingIsTheSameWhenTheWindowComesBack_data() {
        return [{ tag: "pointed at", ring: false }, { tag: "reached with Tab", ring: true }];
    }

    function test_theRingIsTheSameWhenTheWindowComesBack(row) {
        button.focusPolicy = Qt.StrongFocus;
        if (row.ring)
            button.forceActiveFocus(Qt.TabFocusReason);
        else
            mouseClick(button);
        verify(button.activeFocus);
        const other = createTemporaryObject(windowComponent, testCase);
        other.requestActivate();
        tryVerify(() => other.active && !button.activeFocus);
        page.Window.window.requestActivate();
        tryVerify(() => button.activeFocus);
        compare(findChild(button, "focusRing").visible, row.ring);
    }

    function test_whereButtonsLeaveTheKeyboardAloneAClickDoesToo() {
        button.focusPolicy = Qt.TabFocus;
        item("about").forceActiveFocus(Qt.TabFocusReason);
        mouseClick(button);
        compare(presses.count, 1);
        verify(item("about").activeFocus);
    }

    function test_whatIsHiddenLosesTheKeyboard_data() {
        return [{ tag: "a button", element: "alreadyHaveTheFile" }, { tag: "details", element: "detailsText" }];
    }

    function test_whatIsHiddenLosesTheKeyboard(row) {
        probe.put({ errorMessage: "An error.", errorDetails: "Details.", gameDownloadFailed: true });
        waitForRendering(page);
        mouseClick(item("disclosureButton"));
        const element = item(row.element);
        element.forceActiveFocus(Qt.TabFocusReason);
        verify(element.activeFocus);
        keyPress(Qt.Key_Space);
        probe.put({ errorMessage: undefined, gameDownloadFailed: false });
        keyRelease(Qt.Key_Space);
        verify(!element.activeFocus);
        verify(!model.openPanel.isOpen);
        compare(tab(), "mainButton");
    }

    Component {
        id: buttonComponent

        PlainButton {
            width: 100
            text: "Press"
        }
    }

    Component {
        id: spyComponent

        SignalSpy {
            signalName: "clicked"
        }
    }

    Component {
        id: windowComponent

        Window {
            width: 100
            height: 100
            visible: true
        }
    }
}
