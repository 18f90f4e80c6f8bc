// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Cartloom

/// The contrast of texts (4.5:1) and marks (3:1) with what they are drawn on.
PageCase {
    id: testCase
    name: "Contrast"

    readonly property var states: ["normal", "hovered", "pressed"]
    readonly property var grounds: ({
            page: Theme.background,
            card: over(Theme.faded(0.06), Theme.background),
            error: over(Theme.tinted(Theme.orange, 0.12), Theme.background),
            sheet: Theme.raised
        })
    readonly property var controls: ({
            "plain button": [plainButton, ["page", "error"]],
            "link button": [linkButton, ["page"]],
            "web link": [webLink, ["sheet"]],
            "check box": [checkBox, ["page"]],
            "checked box": [checkedBox, ["page"]],
            "details button": [disclosure, ["error"]],
            "ordinary alert button": [ordinaryAlertButton, ["sheet"]],
            "default alert button": [defaultAlertButton, ["sheet"]],
            "Delete": [destructiveAlertButton, ["sheet"]]
        })
    /// Their colours are given: the title of the play button and the line with the version.
    readonly property var givenColours: ["bigButtonTitle", "statusLine"]

    property Item pressed: null

    function cleanup() {
        if (pressed)
            mouseRelease(pressed, -5, -5);
        pressed = null;
        mouseMove(page, 1, 1);
    }

    function linear(channel) {
        return channel <= 0.04045 ? channel / 12.92 : Math.pow((channel + 0.055) / 1.055, 2.4);
    }

    function luminance(colour) {
        return 0.2126 * linear(colour.r) + 0.7152 * linear(colour.g) + 0.0722 * linear(colour.b);
    }

    function ratio(one, other) {
        const [dark, light] = [luminance(one), luminance(other)].sort((a, b) => a - b);
        return (light + 0.05) / (dark + 0.05);
    }

    /// A colour drawn over an opaque one.
    function over(top, ground) {
        const mix = (a, b) => a * top.a + b * (1 - top.a);
        return Qt.rgba(mix(top.r, ground.r), mix(top.g, ground.g), mix(top.b, ground.b), 1);
    }

    /// The colour of a text as it is drawn on an opaque ground.
    function drawnColour(text, ground) {
        let opacity = 1;
        for (let each = text; each; each = each.parent)
            opacity *= each.opacity;
        return over(Theme.tinted(text.color, text.color.a * opacity), ground);
    }

    function at(image, x, y) {
        return image.pixel(Math.floor(x), Math.floor(y));
    }

    /// Fails unless the ratio is at least the given one.
    function verifyContrast(one, other, least, what) {
        const found = ratio(one, other);
        verify(found >= least, `${what}: ${found.toFixed(2)}:1 of ${one} on ${other}`);
    }

    /// A control on a ground of its own, in a state that the mouse has put it in.
    function put(component, ground, state) {
        const board = createTemporaryObject(boardComponent, testCase, { color: ground });
        const control = component.createObject(board, { x: 20, y: 20 });
        mouseMove(board, 1, 1);
        grabImage(board);
        if (state !== "normal")
            mouseMove(control, control.width / 2, control.height / 2);
        if (state === "pressed") {
            mousePress(control);
            pressed = control;
        }
        return control;
    }

    /// The rows of the table: each control on each of its grounds in each state.
    function rowsOf(controls) {
        const rows = [];
        for (const name of Object.keys(controls)) {
            const [component, grounds] = controls[name];
            for (const ground of grounds) {
                for (const state of states)
                    rows.push({ tag: `${name} on ${ground}, ${state}`, component, ground, state });
            }
        }
        return rows;
    }

    function test_titlesOfControls_data() {
        return rowsOf(controls);
    }

    function test_titlesOfControls(row) {
        const control = put(row.component, grounds[row.ground], row.state);
        const title = itemsBelow(control, child => child instanceof Text)[0];
        const image = grabImage(control.parent);
        const place = title.mapToItem(control.parent, title.leftPadding, title.height / 2);
        // Between the title and the edge of its button, or of the details button's background.
        const fill = at(image, place.x - 2, place.y);
        verifyContrast(drawnColour(title, fill), fill, 4.5, row.tag);
    }

    function test_edgeOfTheCheckBox_data() {
        return rowsOf({ "check box": controls["check box"], "checked box": controls["checked box"] });
    }

    function test_edgeOfTheCheckBox(row) {
        const control = put(row.component, grounds[row.ground], row.state);
        const box = control.indicator;
        const image = grabImage(control.parent);
        const place = box.mapToItem(control.parent, 0, box.height / 2);
        verifyContrast(at(image, place.x, place.y), grounds[row.ground], 3, "left edge");
        verifyContrast(at(image, place.x + box.width - 1, place.y), grounds[row.ground], 3, "right edge");
        if (control.checked)
            verifyContrast(Theme.text, at(image, place.x + 2, place.y - 3), 3, "mark");
    }

    function test_progressFill() {
        const bar = put(progressBar, Theme.background, "normal");
        const image = grabImage(bar.parent);
        const [fill, track] = [20, 180].map(x => at(image, bar.x + x, bar.y + 3));
        verifyContrast(fill, track, 3, "fill on track");
        verifyContrast(fill, Theme.background, 3, "fill on page");
        bar.indeterminate = true;
        compare(findChild(bar, "progressTraveller").color, fill);
    }

    function test_marks_data() {
        return [
            { tag: "focus ring on page", colour: Theme.focusRing, ground: "page" },
            { tag: "focus ring on sheet", colour: Theme.focusRing, ground: "sheet" },
            { tag: "focus ring on error", colour: Theme.focusRing, ground: "error" },
            { tag: "scroll bar on page", colour: Theme.scrollHandle, ground: "page" },
            { tag: "scroll bar on sheet", colour: Theme.scrollHandle, ground: "sheet" },
            { tag: "scroll bar on error", colour: Theme.scrollHandle, ground: "error" },
            { tag: "drop frame on page", colour: Theme.green, ground: "page" }
        ];
    }

    function test_marks(row) {
        verifyContrast(over(row.colour, grounds[row.ground]), grounds[row.ground], 3, row.tag);
    }

    function test_everyEnabledText_data() {
        return [
            { tag: "before set-up", fields: {} },
            { tag: "download", fields: { stage: "gettingAres", fraction: 0.4, detailLine: "32 MB of 80 MB" } },
            { tag: "error", press: "disclosureButton",
              fields: { errorMessage: "An error.", errorDetails: "Details.", gameDownloadFailed: true } },
            { tag: "notice", fields: { notice: "A notice." } },
            { tag: "offer", fields: { offerExternal: "/home/anna/Applications/ares.app" } },
            { tag: "update", fields: { updateOffer: "v149" } },
            { tag: "reset", fields: {}, press: "reset" },
            { tag: "About", fields: {}, press: "about" }
        ];
    }

    function test_everyEnabledText(row) {
        probe.put(row.fields);
        grabImage(page);
        if (row.press)
            mouseClick(item(row.press));
        mouseMove(page, 1, 1);
        const overlays = ["externalOfferAlert", "updateAlert", "resetAlert", "aboutView"];
        const overlay = overlays.map(popup).find(each => each);
        if (overlay)
            tryVerify(() => overlay.opened);
        const image = grabImage(page.Window.window.contentItem);
        const texts = itemsBelow(overlay?.contentItem ?? page, child => child.visible && child.enabled
            && (child instanceof Text || child instanceof TextEdit) && child.text !== ""
            && child.mapToItem(page, 0, 0).y < page.height - 1
            && !givenColours.includes(child.objectName));
        verify(texts.length > 3, texts.length);
        for (const text of texts) {
            const place = text.mapToItem(page, 0, 0);
            // No letter reaches into the row above the text's own.
            const ground = at(image, place.x + text.width / 2, place.y);
            verifyContrast(drawnColour(text, ground), ground, 4.5, text.text);
        }
    }

    Component {
        id: boardComponent

        Rectangle {
            width: 300
            height: 80
        }
    }

    Component {
        id: plainButton

        PlainButton {
            text: "Cancel"
        }
    }

    Component {
        id: linkButton

        LinkButton {
            text: "Reset"
        }
    }

    Component {
        id: webLink

        WebLink {
            text: "ares-emu.net"
            address: "http://127.0.0.1:1/"
        }
    }

    Component {
        id: checkBox

        CheckControl {
            text: "Fullscreen"
        }
    }

    Component {
        id: checkedBox

        CheckControl {
            text: "Fullscreen"
            checked: true
        }
    }

    Component {
        id: disclosure

        DisclosureGroup {
            width: 60
            label: "Show Details"
        }
    }

    Component {
        id: ordinaryAlertButton

        AlertButton {
            text: "Download Ares"
            role: AlertAction.Ordinary
        }
    }

    Component {
        id: defaultAlertButton

        AlertButton {
            text: "Update"
            role: AlertAction.Default
        }
    }

    Component {
        id: destructiveAlertButton

        AlertButton {
            text: "Delete"
            role: AlertAction.Destructive
        }
    }

    Component {
        id: progressBar

        LinearProgressBar {
            width: 200
            value: 0.4
        }
    }
}
