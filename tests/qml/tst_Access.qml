// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Cartloom

/// The keyboard, and what assistive technology is told.
PageCase {
    name: "Access"

    function showEverything() {
        probe.put({ stage: "gettingAres", fraction: 0.5, detailLine: "1 MB", errorMessage: "An error.",
                    errorDetails: "Details.", gameDownloadFailed: true });
        waitForRendering(page);
        mouseClick(item("disclosureButton"));
        waitForRendering(page);
    }

    function test_tabFollowsTheReadingOrder() {
        probe.put({ errorMessage: "An error.", errorDetails: "Details.", gameDownloadFailed: true });
        waitForRendering(page);
        compare(tab(), "mainButton");
        compare(tab(), "disclosureButton");
        for (const name of ["openDownloadPage", "alreadyHaveTheFile", "openROM", "fullscreenToggle",
                            "showInFinder", "checkForUpdate", "reset", "about", "mainButton"])
            compare(tab(), name);
        item("alreadyHaveTheFile").forceActiveFocus(Qt.TabFocusReason);
        compare(tab(Qt.ShiftModifier), "openDownloadPage");
        compare(tab(Qt.ShiftModifier), "disclosureButton");
        keyClick(Qt.Key_Space);
        compare(tab(), "detailsText");
        compare(tab(), "openDownloadPage");
        compare(tab(Qt.ShiftModifier), "detailsText");
    }

    function test_whileWorkRunsTabLeadsToCancel() {
        probe.put({ stage: "gettingGame" });
        for (const name of ["cancelButton", "fullscreenToggle", "showInFinder", "about", "cancelButton"])
            compare(tab(), name);
    }

    function test_whatHasTheKeyboardShowsARing() {
        probe.put({ errorMessage: "An error.", errorDetails: "Details.", gameDownloadFailed: true });
        waitForRendering(page);
        const rings = () => itemsBelow(page, child => child.objectName === "focusRing" && child.visible);
        compare(rings().length, 0);
        for (const name of ["mainButton", "disclosureButton", "openDownloadPage", "alreadyHaveTheFile",
                            "openROM", "fullscreenToggle", "showInFinder", "checkForUpdate", "reset",
                            "about"]) {
            compare(tab(), name);
            compare(rings().map(ring => ring.parent), [item(name)]);
        }
        mouseClick(item("disclosureButton"));
        waitForRendering(page);
        item("detailsText").forceActiveFocus(Qt.TabFocusReason);
        compare(rings().map(ring => ring.parent), [item("detailsPane")]);
    }

    function test_keysThatPressTheDisclosure_data() {
        return [
            { tag: "Space", key: Qt.Key_Space },
            { tag: "Return", key: Qt.Key_Return },
            { tag: "Enter", key: Qt.Key_Enter }
        ];
    }

    function test_keysThatPressTheDisclosure(row) {
        probe.put({ errorMessage: "An error.", errorDetails: "Details." });
        compare(tab(), "mainButton");
        compare(tab(), "disclosureButton");
        keyClick(row.key);
        verify(item("detailsPane").visible);
        keyClick(row.key);
        verify(!item("detailsPane").visible);
    }

    function test_whatLiesOverThePageGivesTheKeyboardBack_data() {
        return [{ tag: "reset", answer: Qt.Key_Escape }, { tag: "about", answer: Qt.Key_Return }];
    }

    function test_whatLiesOverThePageGivesTheKeyboardBack(row) {
        item(row.tag).forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Space);
        verify(page.asking);
        tryVerify(() => !item(row.tag).activeFocus);
        keyClick(row.answer);
        verify(!page.asking);
        tryVerify(() => item(row.tag).activeFocus);
        verify(findChild(item(row.tag), "focusRing").visible);
    }

    function test_thePageScrollsToWhatHasTheKeyboard() {
        probe.put({ errorMessage: "A line.\n".repeat(80), gameDownloadFailed: true });
        tryVerify(() => item("pageScroll").view.contentHeight > 1000);
        compare(tab(), "mainButton");
        compare(tab(), "openDownloadPage");
        let button = place("openDownloadPage");
        verify(button.y > 0 && button.y + button.height <= 640, button);
        compare(tab(Qt.ShiftModifier), "mainButton");
        button = place("mainButton");
        verify(button.y >= 24 && button.y + button.height <= 640, button);
    }

    function test_everyVisibleTextIsExposedWithItselfAsItsName() {
        showEverything();
        const texts = itemsBelow(page, child => child instanceof Text && child.visible && child.text !== "");
        compare(texts.map(text => text.text), ["Quillet!64", item("blurb").text, "Getting Ares",
                "Getting Ares",
                "1 MB", "Cancel", "An error.", "Show Details", "Open the download page",
                "I already have the file",
                "Open a ROM file (.z64 / .v64)...", "Controls", ...item("controlsCard").lines,
                item("keyboardNote").text, "Fullscreen", "Show in Finder", "Check for a newer Ares", "Reset",
                "About"]);
        for (const text of texts) {
            const owner = text.Accessible.ignored ? buttonOf(text) : text;
            compare(probe.accessible(owner).name, text.text);
            compare(probe.accessible(owner).role, owner === text ? "StaticText"
                    : owner === item("fullscreenToggle") ? "CheckBox" : "Button");
            compare(text.textFormat, Text.PlainText, text.text);
            verify(!text.truncated, text.text);
        }
        compare(probe.accessible(item("detailsText")).name, "Details.");
        verify(probe.accessible(item("detailsText")).readOnly);
    }

    function buttonOf(text) {
        let owner = text.parent;
        while (!(owner instanceof ButtonBase || owner instanceof CheckControl))
            owner = owner.parent;
        return owner;
    }

    function test_everyControlHasARoleAndItsLabelAsItsName_data() {
        return [
            { tag: "mainButton", name: "Getting Ares" },
            { tag: "cancelButton", name: "Cancel" },
            { tag: "disclosureButton", name: "Show Details" },
            { tag: "openDownloadPage", name: "Open the download page" }
        ];
    }

    function test_everyControlHasARoleAndItsLabelAsItsName(row) {
        showEverything();
        const said = probe.accessible(item(row.tag));
        compare(said.name, row.name);
        compare(said.role, "Button");
        // Of one that is disabled, some versions of Qt say that it can have the focus.
        verify(said.focusable || !item(row.tag).enabled);
    }

    function test_theDisclosureSaysWhetherItIsOpen() {
        probe.put({ errorMessage: "An error.", errorDetails: "Details." });
        waitForRendering(page);
        verify(!probe.accessible(item("disclosureButton")).checked);
        mouseClick(item("disclosureButton"));
        verify(probe.accessible(item("disclosureButton")).checked);
    }

    function test_theProgressBarSaysHowFarItIs() {
        probe.put({ stage: "gettingGame", fraction: 0.426 });
        const bar = item("progressBar");
        compare(probe.accessible(bar).role, "ProgressBar");
        compare(probe.accessible(bar).name, "Getting the game");
        compare(probe.accessible(bar).description, "43%");
        probe.put({ fraction: undefined });
        compare(probe.accessible(bar).description, "");
    }
}
