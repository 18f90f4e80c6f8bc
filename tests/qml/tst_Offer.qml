// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Cartloom

/// The alert that offers a copy of the emulator found on the machine.
PageCase {
    name: "Offer"

    readonly property string app: "/home/anna/Applications/ares.app"

    function offer(path = app) {
        probe.put({ offerExternal: path });
        tryVerify(() => popup("externalOfferAlert")?.opened);
        return popup("externalOfferAlert");
    }

    function buttons() {
        return Array.from(alertItem("alertButtons").children).filter(child => child.text !== undefined);
    }

    function button(text) {
        return buttons().find(candidate => candidate.text === text);
    }

    /// The flow that an answer starts finds no emulator to download.
    function waitForTheFlowToFail() {
        tryVerify(() => model.errorMessage !== undefined);
        verify(model.atRest);
    }

    function test_noOfferNoAlert() {
        compare(popup("externalOfferAlert"), null);
        compare(model.offerExternal, undefined);
    }

    function test_wordsAndButtons() {
        offer();
        compare(alertItem("alertTitle").text, "Ares is already on this Mac");
        compare(alertItem("alertMessage").text,
                "Found " + app + ". Use it instead of downloading about 80 MB?");
        verify(!findChild(alertItem("alertMessageArea"), "scrollBar").visible);
        waitForRendering(page);
        compare(buttons().sort((a, b) => a.y - b.y).map(b => b.text),
                ["Use that one", "Download Ares", "Cancel"]);
        compare(buttons().map(b => b.role),
                [AlertAction.Default, AlertAction.Ordinary, AlertAction.Cancel]);
    }

    function test_aPathIsShownToTheLetterAndWhole() {
        offer("/<b>x</b>/" + "folder_without_blanks".repeat(20) + "/ares.app");
        const message = alertItem("alertMessage");
        compare(message.textFormat, Text.PlainText);
        verify(message.text.includes("/<b>x</b>/"));
        verify(message.contentWidth <= message.width);
        verify(!message.truncated);
        verify(popup("externalOfferAlert").height <= page.height);
    }

    function test_aPathTooLongForTheWindowScrollsWithTheKeyboard() {
        offer("/folder".repeat(400) + "/ares.app");
        const alert = popup("externalOfferAlert");
        verify(alert.height <= page.height - 40);
        const area = alertItem("alertMessageArea");
        verify(area.view.contentHeight > area.height);
        const bar = findChild(area, "scrollBar");
        tryVerify(() => bar.visible);
        fuzzyCompare(bar.size, Math.max(area.height / area.view.contentHeight, bar.minimumSize),
                     0.01);
        keyClick(Qt.Key_Down);
        tryVerify(() => area.view.contentY > 0);
        for (const b of buttons())
            verify(b.mapToItem(page, 0, b.height).y < page.height);
    }

    function test_theAlertIsModal() {
        offer();
        mouseClick(page, 240, 20);
        mouseClick(item("mainButton"), 5, 5);
        verify(popup("externalOfferAlert")?.opened);
        verify(!probe.hasTask());
    }

    function test_theKeyboardStaysInTheAlert() {
        offer();
        verify(button("Use that one").activeFocus);
        for (const text of ["Download Ares", "Cancel", "Use that one", "Download Ares"]) {
            keyClick(Qt.Key_Tab);
            verify(button(text).activeFocus, text);
            verify(findChild(button(text), "focusRing").visible);
        }
        keyClick(Qt.Key_Backtab, Qt.ShiftModifier);
        verify(button("Use that one").activeFocus);
        keyClick(Qt.Key_Backtab, Qt.ShiftModifier);
        verify(button("Cancel").activeFocus);
    }

    function test_useThatOneTakesThePresentedCopy() {
        offer();
        mouseClick(button("Use that one"));
        compare(probe.preferredAres(), app);
        compare(model.offerExternal, undefined);
        tryVerify(() => !popup("externalOfferAlert")?.visible);
        waitForTheFlowToFail();
    }

    function test_useThatOneHandsThePendingROMBack() {
        probe.put({ pendingROM: "/roms/other.z64" });
        offer();
        mouseClick(button("Use that one"));
        compare(probe.pendingROM(), undefined);
        waitForTheFlowToFail();
    }

    function test_downloadAresGoesOnWithoutASecondOffer() {
        offer(probe.placeExternalAres());
        probe.put({ pendingROM: "/roms/other.z64" });
        mouseClick(button("Download Ares"));
        compare(probe.pendingROM(), undefined);
        compare(model.offerExternal, undefined);
        compare(probe.preferredAres(), undefined);
        waitForTheFlowToFail();
        compare(model.offerExternal, undefined);
    }

    function test_cancelForgetsTheOfferAndThePendingROMAndNothingElse() {
        probe.put({ pendingROM: "/roms/other.z64", notice: "A notice." });
        offer();
        mouseClick(button("Cancel"));
        compare(model.offerExternal, undefined);
        compare(probe.pendingROM(), undefined);
        compare(probe.preferredAres(), undefined);
        compare(model.notice, "A notice.");
        verify(model.atRest);
        verify(!probe.hasTask());
        tryVerify(() => !popup("externalOfferAlert")?.visible);
    }

    function test_escapeCancels() {
        probe.put({ pendingROM: "/roms/other.z64" });
        offer();
        keyClick(Qt.Key_Escape);
        compare(model.offerExternal, undefined);
        compare(probe.pendingROM(), undefined);
        verify(!probe.hasTask());
        tryVerify(() => !popup("externalOfferAlert")?.visible);
    }

    function test_returnPressesTheDefaultButton_data() {
        return [{ tag: "Return", key: Qt.Key_Return }, { tag: "Enter", key: Qt.Key_Enter }];
    }

    function test_returnPressesTheDefaultButton(row) {
        offer();
        keyClick(row.key);
        compare(probe.preferredAres(), app);
        compare(model.offerExternal, undefined);
        waitForTheFlowToFail();
    }

    function test_returnAndSpacePressTheButtonThatHasTheKeyboard_data() {
        return [{ tag: "Return", key: Qt.Key_Return }, { tag: "Space", key: Qt.Key_Space }];
    }

    function test_returnAndSpacePressTheButtonThatHasTheKeyboard(row) {
        offer();
        keyClick(Qt.Key_Tab);
        keyClick(Qt.Key_Tab);
        keyClick(row.key);
        compare(model.offerExternal, undefined);
        compare(probe.preferredAres(), undefined);
        verify(!probe.hasTask());
    }

    function test_whatIsShownAndAcceptedIsWhatWasPresented() {
        offer();
        probe.put({ offerExternal: "/opt/ares.app" });
        compare(alertItem("alertMessage").text,
                "Found " + app + ". Use it instead of downloading about 80 MB?");
        mouseClick(button("Use that one"));
        compare(probe.preferredAres(), app);
        waitForTheFlowToFail();
    }

    function test_theWordsStayWhileTheAlertCloses() {
        const alert = offer();
        const words = alert.message;
        probe.put({ offerExternal: undefined });
        compare(alert.message, words);
        tryVerify(() => !popup("externalOfferAlert")?.visible);
        verify(offer("/opt/ares.app").message.startsWith("Found /opt/ares.app."));
    }

    function test_afterTheAlertThePageHasTheKeyboardAgain() {
        offer();
        keyClick(Qt.Key_Escape);
        tryVerify(() => !popup("externalOfferAlert")?.visible);
        compare(tab(), "mainButton");
    }

    function test_theAlertIsToldToAssistiveTechnology() {
        const alert = offer();
        const said = probe.accessible(alert.contentItem);
        compare(said.role, "AlertMessage");
        compare(said.name, alert.title);
        compare(said.description, alert.message);
        for (const b of buttons()) {
            compare(probe.accessible(b).name, b.text);
            compare(probe.accessible(b).role, "Button");
        }
    }
}
