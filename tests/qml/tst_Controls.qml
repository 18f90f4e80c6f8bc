// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Cartloom

/// Size, place and hover feedback of every control that can be pressed.
PageCase {
    id: testCase
    name: "Controls"

    readonly property var overlays: ["externalOfferAlert", "updateAlert", "resetAlert", "aboutView"]
    readonly property var states: ({
            "before set-up": { fields: {} },
            "download": { fields: { stage: "gettingAres", fraction: 0.4, detailLine: "1 MB" } },
            "error": { press: "disclosureButton",
                       fields: { errorMessage: "No.", errorDetails: "Details.", gameDownloadFailed: true } },
            "offer": { fields: { offerExternal: "/home/anna/Applications/ares.app" } },
            "update": { fields: { updateOffer: "v149" } },
            "reset": { fields: {}, press: "reset" },
            "About": { fields: {}, press: "about" }
        })

    function cleanup() {
        Theme.textScale = 1;
    }

    function rows() {
        return Object.keys(states).map(tag => ({ tag }));
    }

    /// Puts the window into a state; returns what can be pressed in it.
    function pressables(state) {
        const { fields, press } = states[state];
        probe.put(fields);
        grabImage(page);
        if (press)
            item(press).clicked();
        const overlay = overlays.map(popup).find(each => each);
        if (overlay)
            tryVerify(() => overlay.opened);
        grabImage(page);
        const found = itemsBelow(overlay?.contentItem ?? page, child => child.visible && child.enabled
                                 && (child instanceof ButtonBase || child instanceof WebLink));
        verify(found.length > 1, found.length);
        return found;
    }

    function placeOf(control) {
        return control.mapToItem(page, 0, 0, control.width, control.height);
    }

    function test_targetsAreAtLeast24By24_data() {
        return rows();
    }

    function test_targetsAreAtLeast24By24(row) {
        for (const control of pressables(row.tag))
            verify(control.width >= 24 && control.height >= 24, `${control.text}: ${placeOf(control)}`);
    }

    function test_controlsLieOnWholePixels_data() {
        return rows();
    }

    function test_controlsLieOnWholePixels(row) {
        for (const control of pressables(row.tag)) {
            const { x, y, width, height } = placeOf(control);
            compare([x, y, width, height].map(Math.round), [x, y, width, height], control.text);
        }
    }

    function test_everythingThatCanBePressedShowsHover_data() {
        return rows();
    }

    function test_everythingThatCanBePressedShowsHover(row) {
        for (const control of pressables(row.tag)) {
            // The page scrolls to what has focus.
            control.forceActiveFocus(Qt.TabFocusReason);
            mouseMove(page, 1, 1);
            const before = grabImage(page.Window.window.contentItem);
            mouseMove(control, control.width / 2, control.height / 2);
            tryVerify(() => !grabImage(page.Window.window.contentItem).equals(before), 1000, control.text);
        }
    }

    function test_noButtonIsWiderThanThePage_data() {
        return rows();
    }

    function test_noButtonIsWiderThanThePage(row) {
        Theme.textScale = 2.5;
        for (const control of pressables(row.tag)) {
            const place = placeOf(control);
            verify(place.x >= 10 && place.x + place.width <= 470, `${control.text}: ${place}`);
        }
    }

    function test_theEdgeOfTheCheckBoxIsOneSharpPixel() {
        const box = item("fullscreenToggle").indicator;
        const place = placeOf(box);
        const image = grabImage(page);
        const y = place.y + place.height / 2;
        const row = dx => String(image.pixel(place.x + dx, y));
        compare(row(-1), String(page.color));
        compare(row(place.width), String(page.color));
        compare(row(0), row(place.width - 1));
        compare(row(1), row(place.width - 2));
        compare(row(1), row(2));
        verify(row(0) !== row(1) && row(0) !== row(-1));
        const x = place.x + place.width / 2;
        compare(String(image.pixel(x, place.y)), row(0));
        compare(String(image.pixel(x, place.y + place.height - 1)), row(0));
    }

    function test_theEdgeOfASheetIsOneSharpPixel_data() {
        return [{ tag: "reset" }, { tag: "About" }];
    }

    function test_theEdgeOfASheetIsOneSharpPixel(row) {
        pressables(row.tag);
        const sheet = overlays.map(popup).find(each => each);
        const { x, y, width, height } = placeOf(sheet.background);
        compare([x, y, width, height].map(Math.round), [x, y, width, height]);
        const image = grabImage(page.Window.window.contentItem);
        const at = dx => String(image.pixel(x + dx, y + height / 2));
        compare(at(0), String(Theme.raisedEdge));
        compare(at(width - 1), String(Theme.raisedEdge));
        compare(at(1), String(Theme.raised));
        compare(at(width - 2), String(Theme.raised));
        compare(String(image.pixel(x + width / 2, y)), String(Theme.raisedEdge));
        compare(String(image.pixel(x + width / 2, y + height - 1)), String(Theme.raisedEdge));
        compare(String(image.pixel(x + width / 2, y + 1)), String(Theme.raised));
    }
}
