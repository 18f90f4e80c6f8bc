// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Cartloom

/// Errors, their details and ways out, and notices.
PageCase {
    id: testCase
    name: "Messages"

    /// As long as a reply may be.
    readonly property string hostile: "v".repeat(1000000)
    readonly property string longDetails: "A line of the emulator's output.\n".repeat(60)

    function openDetails() {
        mouseClick(item("disclosureButton"));
        verify(item("detailsPane").visible);
        waitForRendering(page);
    }

    function test_withoutAMessageThereIsNothing() {
        verify(!item("messages").visible);
        verify(!item("errorBox").visible);
        verify(!item("notice").visible);
    }

    function test_aNotice() {
        probe.put({ notice: "Cancelled. Nothing was changed." });
        const notice = item("notice");
        verify(notice.visible);
        verify(!item("errorBox").visible);
        compare(notice.text, "Cancelled. Nothing was changed.");
        compare(notice.font.pixelSize, 12);
        compareColor(notice.color, "#ffffff", 0.75);
        compare(notice.horizontalAlignment, Text.AlignHCenter);
    }

    function test_theErrorWinsOverTheNotice() {
        probe.put({ notice: "A notice.", errorMessage: "An error." });
        verify(item("errorBox").visible);
        verify(!item("notice").visible);
        probe.put({ errorMessage: undefined });
        verify(!item("errorBox").visible);
        verify(item("notice").visible);
    }

    function test_theErrorBoxIsPaddedBy10AndSpacedBy8() {
        probe.put({ errorMessage: "An error.", errorDetails: "Details.", gameDownloadFailed: true });
        waitForRendering(page);
        const box = place("errorBox");
        const message = place("errorMessage");
        const details = place("errorDetails");
        const row = place("recoveryRow");
        compare(box.width, 432);
        for (const inner of [message, details, row]) {
            compare(inner.x, box.x + 10);
            compare(inner.width, box.width - 20);
        }
        compare(message.y, box.y + 10);
        compare(details.y - message.y - message.height, 8);
        compare(row.y - details.y - details.height, 8);
        compare(box.y + box.height - row.y - row.height, 10);
    }

    function test_theErrorBoxIsOrange() {
        probe.put({ errorMessage: "An error." });
        const message = item("errorMessage");
        compare(message.text, "An error.");
        compare(message.font.pixelSize, 13);
        compareColor(message.color, "#ff9f0a", 1);
        compare(message.horizontalAlignment, Text.AlignLeft);
        const background = item("errorBackground");
        compareColor(background.fillColor, "#ff9f0a", 0.12);
        compare(background.radius, 10);
        compare(background.width, 432);
        compare(background.height, item("errorBox").height);
    }

    function test_aLongErrorWrapsToItsFullHeight() {
        probe.put({ errorMessage: "First.\n\n/a/path/with/no/blanks".repeat(30) });
        const message = item("errorMessage");
        tryVerify(() => message.lineCount > 30);
        verify(message.contentWidth <= message.width);
        verify(!message.truncated);
        tryCompare(item("errorBox"), "height", message.contentHeight + 20);
    }

    function test_anErrorWithoutDetailsHasNoDisclosure() {
        probe.put({ errorMessage: "An error." });
        verify(!item("errorDetails").visible);
        probe.put({ errorDetails: "Details." });
        verify(item("errorDetails").visible);
        compare(item("disclosureButton").text, "Show Details");
    }

    function test_detailsAreCollapsedAtFirst() {
        probe.put({ errorMessage: "An error.", errorDetails: "Details." });
        verify(!item("detailsPane").visible);
        compare(item("disclosureTriangle").rotation, 0);
        openDetails();
        compare(item("disclosureTriangle").rotation, 90);
        mouseClick(item("disclosureButton"));
        verify(!item("detailsPane").visible);
    }

    function test_detailsOfANewErrorAreCollapsedAgain_data() {
        return [{ tag: "another one", next: "Another." }, { tag: "the same one again", next: "An error." }];
    }

    function test_detailsOfANewErrorAreCollapsedAgain(row) {
        probe.put({ errorMessage: "An error.", errorDetails: "Details." });
        openDetails();
        probe.put({ errorMessage: undefined, errorDetails: "" });
        probe.put({ errorMessage: row.next, errorDetails: "More." });
        verify(item("errorDetails").visible);
        verify(!item("detailsPane").visible);
    }

    function test_theDetailsPaneIsNoTallerThanItsText() {
        probe.put({ errorMessage: "An error.", errorDetails: "One line." });
        openDetails();
        const text = item("detailsText");
        compare(text.text, "One line.");
        compare(text.font.pixelSize, 11);
        verifyMonospaced(text.font);
        compare(item("detailsPane").height, text.contentHeight);
        compare(item("detailsPane").width, 412);
        verify(!findChild(item("detailsPane"), "scrollBar").visible);
    }

    function test_longDetailsScrollInAPaneOf100() {
        probe.put({ errorMessage: "An error.", errorDetails: longDetails });
        openDetails();
        const pane = item("detailsPane");
        compare(pane.height, 100);
        verify(pane.view.contentHeight > 100);
        verify(pane.view.clip);
        const bar = findChild(pane, "scrollBar");
        tryVerify(() => bar.visible);
        fuzzyCompare(bar.size, 100 / pane.view.contentHeight, 0.01);
        mouseWheel(pane, 50, 50, 0, -120);
        tryVerify(() => pane.view.contentY > 0);
    }

    function test_detailsCanBeSelectedAndCopied() {
        probe.put({ errorMessage: "An error.", errorDetails: longDetails });
        openDetails();
        const text = item("detailsText");
        mouseClick(text, 5, 5);
        verify(text.activeFocus);
        keySequence(StandardKey.SelectAll);
        compare(text.selectedText, longDetails);
        keySequence(StandardKey.Copy);
        compare(probe.clipboardText(), longDetails);
        keyClick(Qt.Key_X);
        compare(text.text, longDetails);
    }

    function test_detailsCanBeReadAndSelectedWithTheKeyboard() {
        probe.put({ errorMessage: "An error.", errorDetails: longDetails });
        openDetails();
        const text = item("detailsText");
        text.forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_End, Qt.ControlModifier);
        tryVerify(() => item("detailsPane").view.contentY > 0);
        keyClick(Qt.Key_Left, Qt.ShiftModifier);
        keyClick(Qt.Key_Left, Qt.ShiftModifier);
        compare(text.selectedText, longDetails.slice(-2));
    }

    function test_detailsCanBeSelectedWithTheMouse() {
        probe.put({ errorMessage: "An error.", errorDetails: "Some details of it." });
        openDetails();
        const text = item("detailsText");
        mouseDrag(text, 1, 6, 80, 0);
        verify(text.selectedText.length > 3, text.selectedText);
        verify(text.text.startsWith(text.selectedText));
    }

    function test_theWaysOutAreThereOnlyForAFailedGameDownload() {
        probe.put({ gameDownloadFailed: true });
        verify(!shows("recoveryRow"));
        probe.put({ errorMessage: "An error." });
        verify(item("recoveryRow").visible);
        compare(item("openDownloadPage").text, "Open the download page");
        probe.put({ gameDownloadFailed: false });
        verify(!shows("recoveryRow"));
    }

    function test_theDownloadPageIsOpenedInTheBrowser() {
        probe.put({ errorMessage: "An error.", gameDownloadFailed: true });
        waitForRendering(page);
        mouseClick(item("openDownloadPage"));
        compare(probe.opened, [model.storePage]);
        verify(String(model.storePage).endsWith("/quillet64"));
    }

    function test_markupIsShownToTheLetter_data() {
        return [
            { tag: "error", field: "errorMessage", element: "errorMessage" },
            { tag: "details", field: "errorDetails", element: "detailsText" },
            { tag: "notice", field: "notice", element: "notice" },
            { tag: "detail line", field: "detailLine", element: "detailLine" }
        ];
    }

    function test_markupIsShownToTheLetter(row) {
        const markup = "<b>bold</b> & <img src='x'>";
        const message = row.field === "notice" ? undefined : "An error.";
        probe.put({ stage: "gettingAres", errorMessage: message, [row.field]: "plain" });
        const text = item(row.element);
        probe.put({ [row.field]: markup });
        compare(text.text, markup);
        compare(text.textFormat, TextEdit.PlainText);
    }

    function test_aTextTooLongToBeReadIsCutAndThePageWorks_data() {
        return [
            { tag: "notice", element: "notice", longest: 10000, fields: { notice: hostile } },
            { tag: "error", element: "errorMessage", longest: 10000, fields: { errorMessage: hostile } },
            { tag: "details", element: "detailsText", longest: 70000,
              fields: { errorMessage: "An error.", errorDetails: hostile } },
            { tag: "version", element: "statusLine", longest: 10000, fields: { aresVersion: hostile } }
        ];
    }

    function test_aTextTooLongToBeReadIsCutAndThePageWorks(row) {
        const before = place("mainButton");
        probe.put(row.fields);
        if (shows("errorDetails"))
            openDetails();
        waitForRendering(page);
        const text = item(row.element).text;
        compare(text.length, row.longest + 1);
        verify(text.endsWith("vv…"));
        compare(place("mainButton"), before);
        compare(item("pageColumn").width, page.width);
        mouseClick(item("mainButton"));
        tryVerify(() => model.errorMessage !== row.fields.errorMessage);
    }

    function test_aLongTextIsCutBetweenTwoCharacters() {
        probe.put({ notice: "v".repeat(9999) + "😀" });
        compare(item("notice").text, "v".repeat(9999) + "…");
    }

    function test_theLongestTextThatIsNotTooLongIsShownWhole() {
        probe.put({ notice: "v".repeat(10000) });
        compare(item("notice").text, "v".repeat(10000));
    }

    function test_asMuchAsIsKeptOfAComplaintIsShownWhole() {
        const complaint = "bsdtar: ares.app/file: Write failed\n".repeat(1821);
        verify(complaint.length > 65536);
        probe.put({ errorMessage: "An error.", errorDetails: complaint });
        openDetails();
        compare(item("detailsText").text, complaint);
    }

    function test_anErrorOfOneLongLineWraps() {
        probe.put({ errorMessage: "One long line of an error. ".repeat(10) });
        tryVerify(() => item("errorMessage").lineCount > 1);
        verify(item("errorMessage").contentWidth <= item("errorMessage").width);
    }

    function test_theWaysOutStandInOrderSpacedBy8() {
        probe.put({ errorMessage: "An error.", gameDownloadFailed: true });
        waitForRendering(page);
        const first = place("openDownloadPage");
        const second = place("alreadyHaveTheFile");
        compare(second.x, first.x + first.width + 8);
        compare(second.y, first.y);
    }

    function test_detailsOfAnErrorInPlaceOfAnotherAreCollapsed() {
        probe.put({ errorMessage: "An error.", errorDetails: "Details." });
        openDetails();
        probe.put({ errorMessage: "Another.", errorDetails: "More." });
        verify(!item("detailsPane").visible);
    }
}
