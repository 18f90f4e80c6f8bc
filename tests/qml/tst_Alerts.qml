// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Cartloom

/// The alerts that offer an update and that ask before a reset.
PageCase {
    name: "Alerts"

    function update(tag = "v141") {
        probe.put({ updateOffer: tag });
        tryVerify(() => popup("updateAlert")?.opened);
    }

    function askReset() {
        mouseClick(item("reset"));
        tryVerify(() => popup("resetAlert")?.opened);
    }

    function test_theyAreMadeOnlyWhenAskedFor() {
        compare(popup("updateAlert"), null);
        compare(popup("resetAlert"), null);
    }

    function test_wordsAndButtonsOfTheUpdate() {
        update();
        compare(alertItem("alertTitle", "updateAlert").text, "A newer Ares is available");
        compare(alertItem("alertMessage", "updateAlert").text,
                "Version v141 can be downloaded. Your current copy is kept until the new one works.");
        compare(alertButtons("updateAlert").map(b => b.text), ["Update", "Not now"]);
        compare(alertButtons("updateAlert").map(b => b.role), [AlertAction.Default, AlertAction.Cancel]);
    }

    function test_whatIsShownIsWhatWasPresented() {
        update();
        probe.put({ updateOffer: "v142" });
        verify(popup("updateAlert").message.startsWith("Version v141 "));
        compare(popup("updateAlert").release.tagName, "v141");
    }

    function test_aTagTooLongToBeReadIsCutAndTheReleaseIsNot() {
        const tag = "v".repeat(1000000);
        update(tag);
        const message = alertItem("alertMessage", "updateAlert").text;
        compare(message.length, 10001);
        verify(message.startsWith("Version vv") && message.endsWith("vv…"));
        compare(popup("updateAlert").release.tagName, tag);
        verify(popup("updateAlert").height <= page.height);
        mouseClick(alertButton("Not now", "updateAlert"));
        tryVerify(() => !popup("updateAlert")?.visible);
    }

    function test_updateInstalls_data() {
        return [{ tag: "mouse" }, { tag: "Return", key: Qt.Key_Return }];
    }

    function test_updateInstalls(row) {
        update();
        if (row.key)
            keyClick(row.key);
        else
            mouseClick(alertButton("Update", "updateAlert"));
        compare(model.updateOffer, undefined);
        verify(probe.hasTask());
        tryVerify(() => model.errorMessage !== undefined);
        tryCompare(model, "atRest", true);
    }

    function test_notNowOnlyCloses_data() {
        return [{ tag: "mouse" }, { tag: "Escape", key: Qt.Key_Escape }];
    }

    function test_notNowOnlyCloses(row) {
        update();
        if (row.key)
            keyClick(row.key);
        else
            mouseClick(alertButton("Not now", "updateAlert"));
        compare(model.updateOffer, undefined);
        verify(!probe.hasTask());
        tryVerify(() => !popup("updateAlert")?.visible);
    }

    function test_wordsAndButtonsOfTheReset() {
        askReset();
        compare(alertItem("alertTitle", "resetAlert").text, "Reset everything?");
        compare(alertItem("alertMessage", "resetAlert").text, "This deletes the downloaded Ares emulator and "
                + "the game. The next click downloads them again.");
        compare(alertButtons("resetAlert").map(b => b.text), ["Delete", "Cancel"]);
        compare(alertButtons("resetAlert").map(b => b.role), [AlertAction.Destructive, AlertAction.Cancel]);
    }

    function test_theButtonThatDeletesIsDrawnAsSuch() {
        askReset();
        const destructive = alertButton("Delete", "resetAlert");
        const cancel = alertButton("Cancel", "resetAlert");
        compareColor(destructive.contentItem.color, String(Theme.red), 1);
        compareColor(cancel.contentItem.color, "#ffffff", 1);
        verify(!Qt.colorEqual(destructive.background.color, cancel.background.color));
    }

    function test_deleteResets() {
        askReset();
        mouseClick(alertButton("Delete", "resetAlert"));
        verify(!model.confirmReset);
        compare(model.notice, "Everything was deleted. The next click downloads it again.");
        tryVerify(() => !popup("resetAlert")?.visible);
    }

    function test_noKeyThatIsPressedAtOnceDeletes_data() {
        return [{ tag: "Return", key: Qt.Key_Return }, { tag: "Space", key: Qt.Key_Space },
                { tag: "Escape", key: Qt.Key_Escape }];
    }

    function test_cancelOnlyCloses() {
        probe.put({ notice: "A notice." });
        askReset();
        mouseClick(alertButton("Cancel", "resetAlert"));
        verify(!model.confirmReset);
        compare(model.notice, "A notice.");
        verify(!probe.hasTask());
        tryVerify(() => !popup("resetAlert")?.visible);
    }

    function test_noKeyThatIsPressedAtOnceDeletes(row) {
        askReset();
        keyClick(row.key);
        verify(!model.confirmReset);
        compare(model.notice, undefined);
    }
}
