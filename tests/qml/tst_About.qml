// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Cartloom

/// The About sheet.
PageCase {
    id: testCase
    name: "About"

    function about(name) {
        const found = findChild(popup("aboutView").contentItem, name);
        verify(found, name);
        return found;
    }

    function cleanup() {
        Theme.textScale = 1;
    }

    function openSheet() {
        item("about").clicked();
        tryVerify(() => popup("aboutView")?.opened);
        waitForRendering(page);
    }

    function test_itIsMadeOnlyWhenAskedFor() {
        compare(popup("aboutView"), null);
        openSheet();
        verify(page.showAbout);
    }

    function test_words() {
        openSheet();
        compare(about("aboutTitle").text, "About Cartloom");
        compare(about("gameCredit").text,
                "Quillet!64 belongs to its authors (Fernhollow Studios, made for the Homecart Game Jam). "
                + "This app does not contain the game. It only downloads it from their official page, and "
                + "you can get it there yourself:");
        compare(probe.accessible(about("emulatorNote")).name,
                "Ares is an open source emulator (ISC license) from " + model.emulatorSite
                + ". It is downloaded from its official GitHub releases page.");
        compare(about("storeLink").text, "127.0.0.1:1/quillet64");
        compare(about("emulatorLink").text, model.emulatorSite);
        compare(about("licenceHeading").text, "Ares license");
        compare(about("closeAbout").text, "Close");
        const licence = about("licenceText").text.split("\n\n");
        compare(licence.length, 3);
        compare(licence[0], "Copyright (c) 2004-2025 ares team, Near et al");
        verify(licence[1].startsWith("Permission to use, copy, modify, and/or distribute"));
        verify(licence[2].startsWith("THE SOFTWARE IS PROVIDED \"AS IS\""));
    }

    function test_sizes() {
        openSheet();
        compare(popup("aboutView").width, 460);
        compare(popup("aboutView").padding, 20);
        compare(about("licencePane").height, 170);
        verify(about("licencePane").view.contentHeight > 170);
        verify(findChild(about("licencePane"), "scrollBar").visible);
        compare(about("aboutTitle").font.pixelSize, 17);
        compare(about("licenceText").font.pixelSize, 11);
        const parts = Array.from(about("aboutColumn").children).filter(child => child.visible)
            .sort((a, b) => a.y - b.y);
        compare(parts.map(part => part.objectName), ["aboutTitle", "gameCredit", "storeLink", "emulatorNote",
                "emulatorLink", "licenceHeading", "licencePane"]);
        parts.slice(1).forEach((part, i) => compare(part.y - parts[i].y - parts[i].height, 10));
        const close = about("closeAbout");
        compare(close.x + close.width, 420);
        const pane = about("licencePane");
        compare(close.mapToItem(pane, 0, 0).y, pane.height + 10);
        compare(close.y + close.height, popup("aboutView").contentItem.height);
    }

    function test_fonts() {
        openSheet();
        verify(about("aboutTitle").font.bold);
        compare(about("licenceHeading").font.pixelSize, 13);
        verify(about("licenceHeading").font.bold);
        for (const name of ["gameCredit", "emulatorNote"]) {
            compare(about(name).font.pixelSize, 13);
            verify(!about(name).font.bold);
        }
        verifyMonospaced(about("licenceText").font);
    }

    function test_longParagraphsWrapRatherThanWidenTheSheet() {
        openSheet();
        const before = about("emulatorNote").lineCount;
        popup("aboutView").emulatorSite = "a.rather.long.name.of.a.domain.".repeat(8) + "example";
        tryVerify(() => about("emulatorNote").lineCount > before + 2);
        compare(popup("aboutView").width, 460);
        for (const name of ["gameCredit", "emulatorNote"]) {
            verify(about(name).lineCount > 1);
            verify(about(name).contentWidth <= 420);
            verify(!about(name).truncated);
            compare(about(name).height, about(name).contentHeight);
        }
    }

    function test_links() {
        openSheet();
        mouseClick(about("storeLink"));
        mouseClick(about("emulatorLink"));
        compare(probe.opened.map(String), [String(model.storePage), "https://" + model.emulatorSite + "/"]);
        for (const name of ["storeLink", "emulatorLink"]) {
            compare(probe.accessible(about(name)).name, about(name).text);
            compare(probe.accessible(about(name)).role, "Link");
        }
    }

    function test_linksAreReachedWithTabAndFollowedWithSpace() {
        openSheet();
        for (let time = 0; time < 10 && !about("storeLink").activeFocus; ++time)
            keyClick(Qt.Key_Tab);
        verify(findChild(about("storeLink"), "focusRing").visible);
        keyClick(Qt.Key_Space);
        keyClick(Qt.Key_Tab);
        verify(about("emulatorLink").activeFocus);
        keyClick(Qt.Key_Space);
        compare(probe.opened.map(String), [String(model.storePage), "https://" + model.emulatorSite + "/"]);
        verify(page.showAbout);
    }

    function test_aLinkIsFollowedByAssistiveTechnology() {
        openSheet();
        verify(probe.act(about("storeLink"), "Press"));
        compare(probe.opened.map(String), [String(model.storePage)]);
    }

    function test_aLinkWithoutAnAddressIsLeftOut() {
        openSheet();
        popup("aboutView").emulatorSite = "";
        popup("aboutView").storePage = "";
        verify(!about("emulatorLink").visible);
        verify(!about("storeLink").visible);
    }

    function test_itCloses_data() {
        return [{ tag: "Return", key: Qt.Key_Return }, { tag: "Enter", key: Qt.Key_Enter },
                { tag: "Escape", key: Qt.Key_Escape }, { tag: "Close" }];
    }

    function test_itCloses(row) {
        for (let time = 0; time < 2; ++time) {
            openSheet();
            if (row.key)
                keyClick(row.key);
            else
                mouseClick(about("closeAbout"));
            tryVerify(() => !popup("aboutView")?.visible);
            verify(!page.showAbout);
        }
    }

    function test_returnClosesItWhileALinkHasFocus_data() {
        return [{ tag: "Return", key: Qt.Key_Return }, { tag: "Enter", key: Qt.Key_Enter }];
    }

    function test_returnClosesItWhileALinkHasFocus(row) {
        openSheet();
        about("storeLink").forceActiveFocus(Qt.TabFocusReason);
        keyClick(row.key);
        tryVerify(() => !popup("aboutView")?.visible);
        compare(probe.opened.length, 0);
    }

    function test_theDialogIsNamedForAssistiveTechnology() {
        openSheet();
        const dialogs = itemsBelow(page.Window.window.contentItem,
                                   child => probe.accessible(child).role === "Dialog");
        compare(dialogs.map(dialog => probe.accessible(dialog).name), ["About Cartloom"]);
    }

    function test_returnClosesItFromTheLicence() {
        openSheet();
        mouseClick(about("licenceText"), 10, 10);
        verify(about("licenceText").activeFocus);
        keyClick(Qt.Key_Return);
        tryVerify(() => !popup("aboutView")?.visible);
    }

    function test_theLicenceCanBeSelectedAndCopied() {
        openSheet();
        mouseClick(about("licenceText"), 10, 10);
        keySequence(StandardKey.SelectAll);
        keySequence(StandardKey.Copy);
        compare(probe.clipboardText(), AresLicence.text);
    }

    function test_largeTextScrollsInALowWindow() {
        Theme.textScale = 1.5;
        openSheet();
        const sheet = popup("aboutView");
        compare(sheet.width, 460);
        compare(about("licencePane").height, 170);
        verify(sheet.height <= page.height);
        verify(findChild(about("aboutScroll"), "scrollBar").visible);
    }

    function test_closeStaysBelowTheScrollingText() {
        Theme.textScale = 2;
        openSheet();
        const sheet = popup("aboutView");
        const scroll = about("aboutScroll");
        const close = about("closeAbout");
        verify(scroll.contentHeight > scroll.height);
        for (const position of [0, scroll.contentHeight - scroll.height]) {
            scroll.view.contentY = position;
            const bottom = close.mapToItem(sheet.contentItem, 0, close.height).y;
            compare(bottom, sheet.contentItem.height);
        }
        mouseClick(close);
        tryVerify(() => !popup("aboutView")?.visible);
    }

    function test_noLineEndsInsideTheDomainName() {
        openSheet();
        popup("aboutView").emulatorSite = "ares-emu.net";
        const note = about("emulatorNote");
        const layout = createTemporaryObject(layoutComponent, testCase,
                                             { font: note.font, wrapMode: note.wrapMode, text: note.text });
        const start = note.text.indexOf("ares-");
        const end = note.text.indexOf("net") + 2;
        verify(start > 0 && end > start);
        const lines = new Set();
        for (let width = 120; width <= 600; ++width) {
            layout.width = width;
            const top = layout.positionToRectangle(start).y;
            compare(layout.positionToRectangle(end).y, top, width);
            lines.add(top);
        }
        verify(lines.size > 1);
    }

    function test_whatIsScrolledOutOfSightIsNotDrawn() {
        Theme.textScale = 1.6;
        openSheet();
        const scroll = about("aboutScroll");
        const bottom = scroll.mapToItem(page, 0, scroll.height).y;
        const close = about("closeAbout").mapToItem(page, 0, 0);
        verify(about("licencePane").mapToItem(page, 0, 170).y > bottom);
        const picture = grabImage(page.Window.window.contentItem);
        for (let y = bottom; y < close.y; ++y) {
            for (let x = 40; x < 440; ++x)
                compare(String(picture.pixel(x, y)), String(Theme.raised), x + ", " + y);
        }
    }

    function test_noRingAroundWhatHasTheKeyboardIsCutOff() {
        openSheet();
        keyClick(Qt.Key_Tab);
        verify(about("storeLink").activeFocus);
        const ring = findChild(about("storeLink"), "focusRing");
        const place = ring.mapToItem(about("aboutScroll"), 0, 0);
        verify(place.x >= 0, place.x);
        const picture = grabImage(page.Window.window.contentItem);
        const middle = ring.mapToItem(page, 1, ring.height / 2);
        compare(String(picture.pixel(middle.x, middle.y)), String(Theme.focusRing));
    }

    Component {
        id: layoutComponent

        TextEdit {
        }
    }
}
