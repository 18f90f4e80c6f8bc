// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Cartloom

/// The controls below the card.
PageCase {
    name: "Footer"

    function cleanup() {
        Theme.textScale = 1;
    }

    function stages() {
        return ["idle", "gettingAres", "gettingGame", "starting", "playing"];
    }

    function test_columnSpacing8RowSpacing14() {
        probe.put({ aresVersion: "v141" });
        waitForRendering(page);
        const parts = ["fullscreenRow", "linksRow", "statusLine"].map(name => place(name));
        compare(parts[1].y - parts[0].y - parts[0].height, 8);
        compare(parts[2].y - parts[1].y - parts[1].height, 8);
        const links = ["showInFinder", "checkForUpdate", "reset", "about"];
        compare(links.map(name => item(name).text),
                ["Show in Finder", "Check for a newer Ares", "Reset", "About"]);
        links.slice(1).forEach((name, i) => {
            compare(place(name).x - place(links[i]).x - place(links[i]).width, 14);
            compare(place(name).y, place(links[i]).y);
            compare(item(name).font.pixelSize, 10);
        });
        fuzzyCompare((place("showInFinder").x + place("about").x + place("about").width) / 2, 240, 0.5);
        fuzzyCompare(place("fullscreenToggle").x + place("fullscreenToggle").width / 2, 240, 0.5);
    }

    function test_targetsDoNotOverlap_data() {
        return [{ tag: "1", textScale: 1 }, { tag: "1.5", textScale: 1.5 }];
    }

    function test_targetsDoNotOverlap(row) {
        Theme.textScale = row.textScale;
        waitForRendering(page);
        const toggle = place("fullscreenToggle");
        verify(toggle.y >= place("controlsCard").y + place("controlsCard").height);
        verify(toggle.y + toggle.height <= place("showInFinder").y);
    }

    function test_everyLineOfAWrappedRowIsCentred() {
        Theme.textScale = 2;
        waitForRendering(page);
        const lines = {};
        for (const name of ["showInFinder", "checkForUpdate", "reset", "about"])
            lines[place(name).y] = (lines[place(name).y] ?? []).concat([place(name)]);
        verify(Object.keys(lines).length > 1);
        for (const links of Object.values(lines)) {
            const right = links[links.length - 1].x + links[links.length - 1].width;
            fuzzyCompare((links[0].x + right) / 2, 240, 0.5);
        }
        const bottom = Math.max(...Object.keys(lines).map(Number)) + place("about").height;
        compare(place("footerLinks").y + place("footerLinks").height, bottom);
    }

    function test_whatIsDisabledInWhichStage_data() {
        return stages().map(stage => ({ tag: stage }));
    }

    function test_whatIsDisabledInWhichStage(row) {
        probe.put({ stage: row.tag });
        for (const name of ["openROM", "checkForUpdate", "reset"])
            compare(item(name).enabled, row.tag === "idle", name);
        for (const name of ["showInFinder", "about", "fullscreenToggle"])
            verify(item(name).enabled, name);
        compare(item("openROM").text, "Open a ROM file (.z64 / .v64)...");
    }

    function test_statusLine_data() {
        return [
            { tag: "neither", version: undefined, external: false, text: "" },
            { tag: "installed", version: "v141", external: false, text: "Ares v141" },
            { tag: "external", version: undefined, external: true,
              text: "Using the Ares already on this Mac" },
            { tag: "the version wins", version: "v141", external: true, text: "Ares v141" }
        ];
    }

    function test_statusLine(row) {
        probe.put({ aresVersion: row.version, usingExternalAres: row.external });
        compare(item("statusLine").text, row.text);
        compare(item("statusLine").visible, row.text !== "");
        compare(item("statusLine").font.pixelSize, 10);
        compareColor(item("statusLine").color, "#ffffff", 0.4);
    }

    function test_fullscreenIsTheModels_data() {
        return [{ tag: "mouse" }, { tag: "Space", key: Qt.Key_Space }, { tag: "Return", key: Qt.Key_Return },
                { tag: "assistive technology", action: "Toggle" }];
    }

    function test_fullscreenIsTheModels(row) {
        const toggle = item("fullscreenToggle");
        compare(toggle.text, "Fullscreen");
        for (const expected of [true, false]) {
            if (row.action) {
                verify(probe.act(toggle, row.action));
            } else if (row.key) {
                toggle.forceActiveFocus(Qt.TabFocusReason);
                keyClick(row.key);
            } else {
                mouseClick(toggle);
            }
            compare(model.fullscreen, expected);
            compare(probe.prefersFullscreen(), expected);
            compare(toggle.checked, expected);
            compare(probe.accessible(toggle).checked, expected);
            compare(item("checkMark").visible, expected);
        }
        model.fullscreen = true;
        verify(toggle.checked);
    }

    function test_showInFinderMakesTheFolderAndShowsIt() {
        verify(!probe.storageIsFolder());
        mouseClick(item("showInFinder"));
        verify(probe.storageIsFolder());
        tryCompare(probe, "opened", [probe.storage()]);
    }

    function test_aFolderThatCannotBeMadeIsShownAllTheSame() {
        probe.obstructStorage();
        mouseClick(item("showInFinder"));
        tryCompare(probe, "opened", [probe.storage()]);
        verify(!probe.storageIsFolder());
        compare(model.errorMessage, undefined);
    }

    function test_resetAsksFirst() {
        mouseClick(item("reset"));
        verify(model.confirmReset);
    }

    function test_checkForUpdateAsksTheModel() {
        probe.put({ usingExternalAres: true });
        mouseClick(item("checkForUpdate"));
        compare(model.notice, "You are using your own copy of Ares, so update it yourself.");
    }

    function test_switchAndStatusLineAreCentred() {
        probe.put({ aresVersion: "v141" });
        waitForRendering(page);
        const toggle = place("fullscreenToggle");
        fuzzyCompare(toggle.x + toggle.width / 2, 240, 0.5);
        compare(item("statusLine").horizontalAlignment, Text.AlignHCenter);
    }
}
