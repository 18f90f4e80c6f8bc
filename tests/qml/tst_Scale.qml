// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Cartloom

/// What must hold at every scale factor of the screen and for every size of text; it is run at several of
/// them.
PageCase {
    id: testCase
    name: "Scale"

    readonly property var states: ({
            "before set-up": {},
            "with an own Ares": { setupDone: true, usingExternalAres: true },
            "download": { stage: "gettingAres", fraction: 0.4, detailLine: "32 MB of 80.1 MB · 12.3 MB/s" },
            "playing": { stage: "playing", setupDone: true, aresVersion: "v148" },
            "error": { errorMessage: "Ares stopped right away (exit code 3).", errorDetails: "no such core",
                       gameDownloadFailed: true },
            "notice": { notice: "Everything was deleted. The next click downloads it again." },
            "offer": { offerExternal: "/home/anna/Applications/ares.app" },
            "update": { updateOffer: "v149" }
        })

    function cleanup() {
        Theme.textScale = 1;
    }

    /// A dot of what is drawn, by its place on the page. The picture is cut off at 480 by 640 dots.
    function dot(image, x, y) {
        return String(image.pixel(Math.floor(x * Screen.devicePixelRatio),
                                  Math.floor(y * Screen.devicePixelRatio)));
    }

    function test_theRobotIsDrawnWithAllDotsOfTheScreen() {
        const image = grabImage(page);
        const eye = place("robotIcon").x + 55 - 16;
        const height = place("robotIcon").y + 65 - 6;
        const green = String(Theme.green);
        const plate = String(Qt.rgba(0.12, 0.12, 0.12, 1));
        compare([-8, -5, 0, 5].map(dx => dot(image, eye + dx, height)), [plate, green, green, green]);
        compare([-8, -5, 5, 8].map(dy => dot(image, eye, height + dy)), [plate, green, green, plate]);
    }

    function test_nothingIsCutOff_data() {
        return Object.keys(states).reduce((rows, state) => rows.concat([1, 1.5, 2.5].map(
            textScale => ({ tag: state + ", text " + textScale, fields: states[state], textScale }))), []);
    }

    function test_nothingIsCutOff(row) {
        Theme.textScale = row.textScale;
        probe.put(row.fields);
        grabImage(page);
        const texts = itemsBelow(page.Window.window.contentItem,
                                 child => child instanceof Text && child.visible && child.text !== "");
        verify(texts.length > 10, texts.length);
        compare(item("blurb").font.pixelSize, 12 * row.textScale);
        for (const text of texts) {
            const left = text.mapToItem(page, 0, 0).x;
            verify(!text.truncated, text.text);
            verify(text.contentWidth <= text.width + 0.5, text.text);
            verify(text.contentHeight <= text.height + 0.5, text.text);
            verify(left >= 0 && left + text.width <= 480, text.text);
        }
    }

    function test_textFollowsTheDesktopsFontFromItsDefaultUpward_data() {
        const scales = Qt.platform.os === "osx" ? { 10: 1, 13: 1, 26: 2 }
                                                : { 8: 1, 10: 1, 11: 1, 13: 13 / 11, 22: 2 };
        return Object.keys(scales).map(points => ({ tag: points + " points", points, scale: scales[points] }));
    }

    function test_textFollowsTheDesktopsFontFromItsDefaultUpward(row) {
        fuzzyCompare(probe.textScaleFor(row.points), row.scale, 0.001);
    }

    function test_theEndOfTheBarIsTheSameAboveAndBelow() {
        const bar = createTemporaryObject(barComponent, page);
        const image = grabImage(page);
        const ratio = Screen.devicePixelRatio;
        for (let x = 0; x < 4; ++x) {
            const column = [];
            for (let y = Math.floor(bar.y * ratio) - 2; y < (bar.y + bar.height) * ratio + 2; ++y)
                column.push(String(image.pixel(Math.round(bar.x * ratio) + x, y)));
            const seen = column.filter(colour => colour !== column[0]);
            verify(seen.length >= 2, column);
            compare(seen, seen.slice().reverse());
        }
    }

    function test_theEdgeOfTheCheckBoxIsTheSameOnEverySide() {
        const ratio = Screen.devicePixelRatio;
        const board = createTemporaryObject(checkComponent, page);
        const image = grabImage(board);
        const reach = 30 * ratio;
        const rows = [(i, middle) => image.pixel(i, middle), (i, middle) => image.pixel(middle, i)];
        const edges = rows.map(pixel => {
            const colours = [];
            for (let i = 0; i < reach; ++i)
                colours.push(String(pixel(i, 10 * ratio + 7 * ratio)));
            return colours.filter(colour => colour !== colours[0]);
        });
        verify(edges[0].length >= 13 * ratio, edges[0]);
        compare(edges[0], edges[0].slice().reverse());
        compare(edges[1], edges[0]);
    }

    function test_theEdgesOfThePlayButtonAreSmooth() {
        const ratio = Screen.devicePixelRatio;
        const image = grabImage(page);
        const button = place("mainButton");
        const at = (x, y) => String(image.pixel(Math.round(button.x * ratio) + x,
                                                Math.round(button.y * ratio) + y));
        const ground = at(0, 0);
        const green = at(40 * ratio, 10 * ratio);
        verify(ground !== green);
        let between = 0;
        for (let x = 0; x < 14 * ratio; ++x) {
            for (let y = 0; y < 14 * ratio; ++y)
                between += ![ground, green].includes(at(x, y));
        }
        verify(between >= 6 * ratio, between);
    }

    Component {
        id: checkComponent

        Rectangle {
            width: 100
            height: 100
            color: Theme.background

            CheckControl {
                x: 10
                y: 5
                height: 24
            }
        }
    }

    Component {
        id: barComponent

        LinearProgressBar {
            x: 8
            y: 11
            width: 100
        }
    }
}
