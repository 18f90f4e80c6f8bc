// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Cartloom

/// The controls, with the model really doing what they ask for.
PageCase {
    name: "Flow"

    function test_thePlayButtonStartsTheFlow_data() {
        return [{ tag: "mouse" }, { tag: "Space", key: Qt.Key_Space }, { tag: "Return", key: Qt.Key_Return }];
    }

    function test_thePlayButtonStartsTheFlow(row) {
        probe.silenceReleaseApi();
        if (row.key) {
            compare(tab(), "mainButton");
            keyClick(row.key);
        } else {
            mouseClick(item("mainButton"));
        }
        tryCompare(model, "stageTitle", "Getting Ares");
        compare(item("mainButton").text, "Getting Ares");
        verify(item("statusArea").visible);
        model.cancel();
        tryCompare(model, "atRest", true);
    }

    function test_thePlayButtonIgnoresClicksWhileWorkRuns() {
        probe.put({ stage: "playing", notice: "A notice." });
        mouseClick(item("mainButton"));
        verify(!probe.hasTask());
        compare(model.notice, "A notice.");
    }

    function test_cancelCancelsTheRunningTask_data() {
        return [{ tag: "mouse" }, { tag: "Space", key: Qt.Key_Space }, { tag: "Return", key: Qt.Key_Return }];
    }

    function test_cancelCancelsTheRunningTask(row) {
        probe.silenceReleaseApi();
        mouseClick(item("mainButton"));
        tryCompare(model, "stageTitle", "Getting Ares");
        waitForRendering(page);
        if (row.key) {
            compare(tab(), "cancelButton");
            keyClick(row.key);
        } else {
            mouseClick(item("cancelButton"));
        }
        tryCompare(model, "atRest", true);
        compare(item("notice").text, "Cancelled. Nothing was changed.");
        verify(item("notice").visible);
        verify(!item("statusArea").visible);
        verify(item("mainButton").enabled);
    }

    function test_aFailureShowsItsMessageAndDetails() {
        mouseClick(item("mainButton"));
        tryVerify(() => item("errorBox").visible);
        compare(item("errorMessage").text, model.errorMessage);
        compare(item("errorDetails").visible, model.errorDetails !== "");
        verify(!shows("recoveryRow"));
        verify(model.atRest);
    }

    function test_aCopyInTheApplicationsIsOfferedAndTheGameIsFetchedWithIt() {
        const app = probe.placeExternalAres();
        mouseClick(item("mainButton"));
        tryVerify(() => popup("externalOfferAlert")?.opened);
        const alert = popup("externalOfferAlert");
        verify(model.atRest);
        compare(alert.message, "Found " + app + ". Use it instead of downloading about 80 MB?");
        keyClick(Qt.Key_Return);
        tryVerify(() => shows("recoveryRow"));
        compare(probe.preferredAres(), app);
        verify(model.usingExternalAres);
        verify(!alert.visible);
    }

    function test_theNextPressRemovesTheOldMessage() {
        probe.silenceReleaseApi();
        probe.put({ errorMessage: "An old error." });
        mouseClick(item("mainButton"));
        verify(!item("messages").visible);
        tryCompare(model, "stageTitle", "Getting Ares");
        model.cancel();
        tryCompare(model, "atRest", true);
    }
}
