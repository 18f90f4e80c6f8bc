// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Cartloom

/// The progress of the work that runs.
PageCase {
    name: "Status"

    function test_theBarIsIndeterminateUntilThereIsAFraction() {
        probe.put({ stage: "gettingAres" });
        const bar = item("progressBar");
        verify(bar.indeterminate);
        verify(item("progressTraveller").visible);
        verify(!item("progressFill").visible);
        probe.put({ fraction: 0.25 });
        verify(!bar.indeterminate);
        verify(!item("progressTraveller").visible);
        compare(bar.from, 0);
        compare(bar.to, 1);
        compare(bar.value, 0.25);
        compare(item("progressFill").width, 0.25 * 432);
        probe.put({ fraction: undefined });
        verify(bar.indeterminate);
    }

    function test_theFullBarIsAsWideAsTheColumn() {
        probe.put({ stage: "gettingGame", fraction: 1.0 });
        compare(item("progressFill").width, 432);
    }

    function test_anEmptyBarIsNotIndeterminate() {
        probe.put({ stage: "gettingGame", fraction: 0.0 });
        verify(!item("progressBar").indeterminate);
        verify(!item("progressFill").visible);
    }

    function test_theIndeterminateBarIsALinearOneAndItsPieceTravelsWithinIt() {
        probe.put({ stage: "gettingAres" });
        const bar = item("progressBar");
        compare(bar.width, 432);
        compare(bar.height, 6);
        const piece = item("progressTraveller");
        const start = piece.x;
        tryVerify(() => piece.x > start);
        verify(piece.x + piece.width <= bar.width);
    }

    function test_nothingMovesUnlessTheBarIsSeen_data() {
        return [
            { tag: "idle", moves: false },
            { tag: "gettingAres", moves: true },
            { tag: "gettingGame", moves: true },
            { tag: "starting", moves: true },
            { tag: "playing", moves: false }
        ];
    }

    function test_nothingMovesUnlessTheBarIsSeen(row) {
        // The bar is made when it is first seen.
        probe.put({ stage: "starting" });
        const travel = findChild(item("progressTraveller"), "progressTravel");
        probe.put({ stage: row.tag });
        compare(travel.running, row.moves);
        probe.put({ fraction: 0.5 });
        verify(!travel.running);
    }

    function test_theRowHasTheStageOnTheLeftAndTheDetailOnTheRight() {
        probe.put({ stage: "gettingAres", detailLine: "4.2 MB of 80.1 MB · 1.1 MB/s" });
        waitForRendering(page);
        const stage = item("stageTitle");
        compare(stage.text, "Getting Ares");
        compare(stage.font.pixelSize, 10);
        compare(stage.font.bold, true);
        compare(place("stageTitle").x, 24);
        const detail = item("detailLine");
        compare(detail.text, "4.2 MB of 80.1 MB · 1.1 MB/s");
        compare(detail.font.pixelSize, 10);
        compare(detail.font.bold, false);
        compareColor(detail.color, "#ffffff", 0.6);
        compare(detail.horizontalAlignment, Text.AlignRight);
        compare(place("detailLine").x + detail.width, 480 - 24);
        compare(place("detailLine").y + detail.height / 2, place("stageTitle").y + stage.height / 2);
    }

    function test_aDetailThatIsTooLongWraps() {
        probe.put({ stage: "gettingAres", detailLine: "123.4 MB of 567.8 MB · 9.1 MB/s ".repeat(5) });
        const detail = item("detailLine");
        tryVerify(() => detail.lineCount > 1);
        verify(!detail.truncated);
        compare(item("statusRow").height, detail.height);
    }

    function test_barRowAndCancelAreSpacedBy6() {
        probe.put({ stage: "gettingGame", detailLine: "1 MB" });
        waitForRendering(page);
        const bar = place("progressBar");
        const row = place("statusRow");
        const cancel = place("cancelButton");
        compare(bar.y, place("statusArea").y);
        compare(row.y - bar.y - bar.height, 6);
        compare(cancel.y - row.y - row.height, 6);
        fuzzyCompare(cancel.x + cancel.width / 2, 240, 0.5);
        compare(item("cancelButton").text, "Cancel");
    }

    function test_theStageIsWhite() {
        probe.put({ stage: "gettingAres" });
        compareColor(item("stageTitle").color, "#ffffff", 1);
        compare(item("stageTitle").opacity, 1);
    }
}
