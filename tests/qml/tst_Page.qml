// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Cartloom

/// What the page shows in which state of the model, and where.
PageCase {
    name: "Page"

    function test_elementsAtRestFromTopToBottom() {
        compare(elements(), ["robotIcon", "gameTitle", "blurb", "mainButtonArea", "openROM", "controlsCard",
                             "footer"]);
    }

    function test_elementsWhileWorkRunsAndAnErrorIsShown() {
        probe.put({ stage: "gettingAres", errorMessage: "No." });
        waitForRendering(page);
        compare(elements(), ["robotIcon", "gameTitle", "blurb", "mainButtonArea", "statusArea", "messages",
                             "openROM", "controlsCard", "footer"]);
    }

    function test_theColumnHasPadding24AndSpacing14() {
        probe.put({ stage: "gettingAres", errorMessage: "No." });
        waitForRendering(page);
        const icon = place("robotIcon");
        compare(icon.y, 24);
        compare(icon.x, (480 - 110) / 2);
        let bottom = icon.y + icon.height;
        for (const name of elements().slice(1)) {
            const next = place(name);
            compare(next.y - bottom, 14, name);
            fuzzyCompare(next.x + next.width / 2, 240, 0.5, name);
            compare(name === "openROM" || next.width === 480 - 48, true, name);
            bottom = next.y + next.height;
        }
        compare(item("pageColumn").height, bottom + 24);
    }

    function test_inAWideWindowTheColumnTakesTheWholeWidth() {
        page.width = 900;
        compare(place("mainButton").width, 900 - 48);
        compare(place("mainButton").x, 24);
        compare(place("robotIcon").x, (900 - 110) / 2);
    }

    function test_theBackgroundIsDarkAndFillsThePage() {
        compare(page.color, Qt.rgba(0.09, 0.1, 0.12, 1));
    }

    function test_theTitle() {
        const title = item("gameTitle");
        compare(title.text, "Quillet!64");
        compare(title.font.pixelSize, 30);
        compare(title.font.weight, Font.ExtraBold);
        compare(title.font.family, Theme.roundedFamily);
        compareColor(title.color, "#ffffff", 1);
    }

    function test_withoutARoundedFaceTheTitleHasTheDefaultOne() {
        compare(Theme.firstInstalled(["No such family"]), Application.font.family);
    }

    function test_theBlurbIsWholeAndWraps() {
        const blurb = item("blurb");
        compare(blurb.text, "A free 3D platformer for the Nintendo 64, made for the 2025 Homecart Game Jam. "
                + "Plays in the Ares emulator.");
        compare(blurb.font.pixelSize, 12);
        compareColor(blurb.color, "#ffffff", 0.7);
        compare(blurb.horizontalAlignment, Text.AlignHCenter);
        page.width = 200;
        verify(blurb.lineCount > 2);
        verify(!blurb.truncated);
        verify(blurb.height >= blurb.contentHeight);
    }

    function test_buttonTitle_data() {
        return [
            { tag: "idle, set up", stage: "idle", setupDone: true, title: "Play" },
            { tag: "idle, not set up", stage: "idle", setupDone: false, title: "Set up and Play" },
            { tag: "gettingAres", stage: "gettingAres", setupDone: false, title: "Getting Ares" },
            { tag: "gettingGame", stage: "gettingGame", setupDone: false, title: "Getting the game" },
            { tag: "starting", stage: "starting", setupDone: true, title: "Starting" },
            { tag: "playing", stage: "playing", setupDone: true, title: "Playing..." }
        ];
    }

    function test_buttonTitle(row) {
        probe.put({ stage: row.stage, setupDone: row.setupDone });
        compare(item("mainButton").text, row.title);
        compare(item("bigButtonTitle").text, row.title);
        compare(item("mainButton").enabled, row.stage === "idle");
    }

    function test_theHintIsThereOnlyBeforeSetUpAndAtRest_data() {
        const rows = [];
        for (const stage of ["idle", "gettingAres", "gettingGame", "starting", "playing"]) {
            for (const done of [true, false])
                rows.push({ tag: stage + ", set up: " + done, stage: stage, done: done });
        }
        return rows;
    }

    function test_theHintIsThereOnlyBeforeSetUpAndAtRest(row) {
        probe.put({ stage: row.stage, setupDone: row.done });
        compare(item("hint").visible, row.stage === "idle" && !row.done);
    }

    function test_theHintLies6UnderTheButton() {
        const hint = item("hint");
        compare(hint.text,
                "Downloads the Ares emulator (about 80 MB) and the game (about 16 MB). Once only.");
        compare(hint.font.pixelSize, 10);
        compareColor(hint.color, "#ffffff", 0.6);
        compare(place("hint").y - place("mainButton").y - place("mainButton").height, 6);
        probe.put({ setupDone: true });
        waitForRendering(page);
        compare(item("mainButtonArea").height, item("mainButton").height);
    }

    function test_theStatusAreaIsThereWhileWorkRuns_data() {
        return [
            { tag: "idle", there: false, cancel: false },
            { tag: "gettingAres", there: true, cancel: true },
            { tag: "gettingGame", there: true, cancel: true },
            { tag: "starting", there: true, cancel: false },
            { tag: "playing", there: false, cancel: false }
        ];
    }

    function test_theStatusAreaIsThereWhileWorkRuns(row) {
        probe.put({ stage: row.tag });
        compare(item("statusArea").visible, row.there);
        compare(shows("cancelButton"), row.cancel);
        if (row.there)
            compare(item("stageTitle").text, item("mainButton").text);
    }

    function test_atRestThePageFitsTheWindowItOpensIn_data() {
        return [
            { tag: "before set-up", fields: { setupDone: false } },
            { tag: "after set-up", fields: { setupDone: true, aresVersion: "v148" } },
            { tag: "with another Ares", fields: { setupDone: true, usingExternalAres: true } },
            { tag: "playing", fields: { setupDone: true, aresVersion: "v148", stage: "playing" } }
        ];
    }

    function test_atRestThePageFitsTheWindowItOpensIn(row) {
        probe.put(row.fields);
        grabImage(page);
        verify(item("pageColumn").height <= 640, item("pageColumn").height);
        verify(!findChild(item("pageScroll"), "scrollBar").visible);
    }

    function test_aTallPageScrollsVertically() {
        const scroll = item("pageScroll");
        compare(scroll.view.contentHeight, item("pageColumn").height);
        const bar = findChild(scroll, "scrollBar");
        page.height = 900;
        tryVerify(() => !bar.visible);
        page.height = 640;
        probe.put({ errorMessage: "A line.\n".repeat(60) });
        tryVerify(() => bar.visible);
        compare(scroll.view.contentWidth, 480);
        verify(scroll.view.contentHeight > 640);
        mouseWheel(page, 240, 300, 0, -1200);
        tryVerify(() => scroll.view.contentY > 0);
    }

    function test_titleAndHintAreCentred() {
        for (const name of ["gameTitle", "hint"])
            compare(item(name).horizontalAlignment, Text.AlignHCenter, name);
    }
}
