// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Dialogs
import QtTest
import Cartloom

/// The file panel, the drop of a file, the shortcuts, and what is announced.
PageCase {
    name: "Panel"

    readonly property var window: page?.Window.window

    function panel() {
        tryVerify(() => item("filePanel").item);
        return item("filePanel").item;
    }

    function test_openROM_data() {
        return [{ tag: "mouse" }, { tag: "Ctrl+O", key: Qt.Key_O }];
    }

    function test_openROM(row) {
        verify(!item("filePanel").item);
        if (row.key)
            keyClick(row.key, Qt.ControlModifier);
        else
            mouseClick(item("openROM"));
        verify(model.openPanel.isOpen);
        compare(panel().title, "Choose a Nintendo 64 game");
        compare(panel().nameFilters,
                ["Pick a .z64 or .v64 ROM file. (*.z64 *.Z64 *.v64 *.V64 *.n64 *.N64)"]);
        compare(panel().modality, Qt.ApplicationModal);
        compare(panel().fileMode, FileDialog.OpenFile);
        panel().reject();
        tryVerify(() => !item("filePanel").item);
        verify(!model.openPanel.isOpen);
        compare(model.errorMessage, undefined);
    }

    function test_alreadyHaveTheFile() {
        probe.put({ errorMessage: "No.", gameDownloadFailed: true });
        waitForRendering(page);
        mouseClick(item("alreadyHaveTheFile"));
        compare(panel().title, "Choose Quillet64.z64");
        compare(panel().nameFilters, []);
        compare(panel().fileMode, FileDialog.OpenFile);
        panel().reject();
        compare(model.errorMessage, "No.");
    }

    function test_whatIsChosenIsChecked() {
        mouseClick(item("openROM"));
        const dialog = panel();
        dialog.selectedFile = probe.placeRom("small.z64", 1000);
        dialog.accepted();
        tryVerify(() => model.errorMessage !== undefined);
        tryVerify(() => !item("filePanel").item);
        verify(!probe.hasTask());
    }

    function test_ctrlODoesNothingWhileWorkRuns() {
        probe.put({ stage: "playing" });
        keyClick(Qt.Key_O, Qt.ControlModifier);
        verify(!model.openPanel.isOpen);
    }

    function test_escapeCancelsWhereCancelIsOffered() {
        probe.silenceReleaseApi();
        mouseClick(item("mainButton"));
        tryCompare(model, "stageTitle", "Getting Ares");
        keyClick(Qt.Key_Escape);
        tryCompare(model, "notice", "Cancelled. Nothing was changed.");
    }

    function test_aDroppedFileIsHandedToTheModel() {
        const rom = probe.placeRom("game.z64", 2000000);
        verify(probe.drag(window, Qt.point(200, 200), [rom]));
        verify(item("dropHighlight").visible);
        probe.drop(window, Qt.point(200, 200));
        verify(!item("dropHighlight").visible);
        tryVerify(() => probe.hasTask());
        tryVerify(() => model.errorMessage !== undefined);
    }

    function test_aDragThatLeavesChangesNothing() {
        verify(probe.drag(window, Qt.point(200, 200), [probe.placeRom("game.z64", 2000000)]));
        probe.leave(window);
        verify(!item("dropHighlight").visible);
        verify(!probe.hasTask());
    }

    function test_twoDroppedFilesAreRefused() {
        const roms = [probe.placeRom("a.z64", 2000000), probe.placeRom("b.z64", 2000000)];
        verify(probe.drag(window, Qt.point(200, 200), roms));
        probe.drop(window, Qt.point(200, 200));
        compare(model.errorMessage, "Drop one game file at a time.");
    }

    function test_nothingIsTakenWhileWorkRunsOrAQuestionIsOpen_data() {
        return [{ tag: "playing", fields: { stage: "playing" } },
                { tag: "gettingAres", fields: { stage: "gettingAres" } },
                { tag: "a question", fields: { updateOffer: "v141" } }];
    }

    function test_nothingIsTakenWhileWorkRunsOrAQuestionIsOpen(row) {
        probe.put(row.fields);
        verify(!probe.drag(window, Qt.point(200, 200), [probe.placeRom("game.z64", 2000000)]));
        verify(!item("dropHighlight").visible);
    }

    function test_stagesAndMessagesAreAnnounced() {
        const said = () => probe.accessible(item("announcer"));
        verify(!item("announcer").visible);
        probe.put({ stage: "gettingAres" });
        verify(item("announcer").visible);
        compare(said().role, "AlertMessage");
        compare(said().name, "Getting Ares");
        probe.put({ stage: "gettingGame" });
        compare(said().name, "Getting the game");
        probe.put({ stage: "idle", errorMessage: "An error." });
        compare(said().name, "An error.");
        probe.put({ errorMessage: undefined, notice: "A notice." });
        compare(said().name, "A notice.");
    }
}
