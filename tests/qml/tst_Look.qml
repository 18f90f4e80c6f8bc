// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Cartloom

/// The big green button and the robot.
PageCase {
    id: testCase
    name: "Look"

    function placeInIcon(name) {
        const found = item(name);
        const centre = found.mapToItem(item("robotIcon"), found.width / 2, found.height / 2);
        return { width: found.width, height: found.height, dx: centre.x - 55, dy: centre.y - 65 };
    }

    function test_thePlayButtonIsPaddedBy16AboveAndBelow() {
        const button = item("mainButton");
        compare(button.topPadding, 16);
        compare(button.bottomPadding, 16);
        compare(button.leftPadding, 0);
        compare(button.rightPadding, 0);
        compare(button.height, item("bigButtonTitle").implicitHeight + 32);
        compare(button.width, 432);
        compare(item("bigButtonTitle").width, 432);
    }

    function test_theTitleOfThePlayButton() {
        const title = item("bigButtonTitle");
        compare(title.font.pixelSize, 22);
        compare(title.font.weight, Font.Bold);
        compareColor(title.color, "#ffffff", 1);
        compare(title.horizontalAlignment, Text.AlignHCenter);
    }

    function test_aLongTitleStaysOnOneLineWhereItFits() {
        const button = createTemporaryObject(buttonComponent, testCase, { text: "Getting everything ready" });
        compare(button.contentItem.lineCount, 1);
        compare(button.width, 432);
        compare(button.height, button.contentItem.implicitHeight + 32);
    }

    function test_theBackgroundOfThePlayButton() {
        const background = item("bigButtonBackground");
        compareColor(background.fillColor, "#30d158", 0.85);
        compare(background.radius, 14);
        compare(background.width, 432);
        compare(background.height, item("mainButton").height);
    }

    function test_pressingChangesOnlyTheOpacityOfTheGreen() {
        const button = createTemporaryObject(buttonComponent, testCase, { text: "Play" });
        const size = Qt.size(button.width, button.height);
        mousePress(button);
        compareColor(button.background.fillColor, "#30d158", 0.6);
        compareColor(button.contentItem.color, "#ffffff", 1);
        compare(Qt.size(button.width, button.height), size);
        compare(button.opacity, 1);
        compare(button.scale, 1);
        mouseRelease(button);
        compareColor(button.background.fillColor, "#30d158", 0.85);
    }

    function test_theDisabledPlayButtonLooksAsBefore_data() {
        return [{ tag: "gettingAres" }, { tag: "gettingGame" }, { tag: "starting" }, { tag: "playing" }];
    }

    function test_theDisabledPlayButtonLooksAsBefore(row) {
        probe.put({ stage: row.tag });
        const button = item("mainButton");
        verify(!button.enabled);
        compare(button.opacity, 1);
        compareColor(item("bigButtonBackground").fillColor, "#30d158", 0.85);
        compareColor(item("bigButtonTitle").color, "#ffffff", 1);
    }

    function test_theEdgesOfThePlayButtonAreSmooth() {
        const image = grabImage(page);
        const button = place("mainButton");
        const ground = String(image.pixel(button.x - 2, button.y - 2));
        const green = String(image.pixel(button.x + 40, button.y + 10));
        compare(String(image.pixel(button.x, button.y)), ground);
        let between = 0;
        for (let i = 0; i < 14; ++i) {
            for (let j = 0; j < 14; ++j)
                between += ![ground, green].includes(String(image.pixel(button.x + i, button.y + j)));
        }
        verify(between >= 6, between);
    }

    /// How much of a pixel a white shape covers.
    function coverage(image, x, y) {
        return image.red(x, y) / 255;
    }

    function test_cornersAreContinuous() {
        const shape = createTemporaryObject(shapeComponent, testCase, { radius: 40 });
        const image = grabImage(shape);
        // A circular arc would leave the side at 40. The curve leaves it sooner, where it is hardly bent.
        compare(coverage(image, 100, 0), 1);
        compare(coverage(image, 64, 0), 1);
        verify(coverage(image, 44, 0) < 1, coverage(image, 44, 0));
        // On the diagonal it passes where the arc does: 40 * (1 - 1 / sqrt(2)) from both sides.
        compare(coverage(image, 10, 10), 0);
        compare(coverage(image, 13, 13), 1);
    }

    function test_aRadiusOfHalfTheSidesIsACircle() {
        const shape = createTemporaryObject(shapeComponent, testCase, { radius: 100 });
        const image = grabImage(shape);
        for (let degrees = 0; degrees < 360; degrees += 5) {
            const x = Math.cos(degrees * Math.PI / 180);
            const y = Math.sin(degrees * Math.PI / 180);
            compare(coverage(image, Math.floor(100 + 98 * x), Math.floor(100 + 98 * y)), 1, degrees);
            if (degrees % 90 !== 0)
                compare(coverage(image, Math.floor(100 + 102 * x), Math.floor(100 + 102 * y)), 0, degrees);
        }
    }

    function test_layersOfTheRobot_data() {
        return [
            { tag: "antenna", width: 4, height: 14, dx: 0, dy: -52 },
            { tag: "antennaTip", width: 10, height: 10, dx: 0, dy: -60 },
            { tag: "head", width: 90, height: 80, dx: 0, dy: 0 },
            { tag: "facePlate", width: 70, height: 36, dx: 0, dy: -6 },
            { tag: "eyes", width: 46, height: 14, dx: 0, dy: -6 },
            { tag: "bolt", width: 10, height: 16, dx: 0, dy: 25 }
        ];
    }

    function test_layersOfTheRobot(row) {
        const { width, height, dx, dy } = row;
        compare(placeInIcon(row.tag), { width, height, dx, dy });
    }

    function test_theLayersLieBackToFront() {
        compare(Array.from(item("robotIcon").children).map(child => child.objectName),
                ["antenna", "antennaTip", "head", "facePlate", "eyes", "bolt"]);
    }

    function test_coloursOfTheRobot() {
        compareColor(item("antenna").color, "#98989d", 1);
        compareColor(item("antennaTip").fillColor, "#ffd60a", 1);
        compare(item("head").radius, 22);
        const stops = item("head").gradient.stops;
        compare(stops.length, 2);
        compare(stops[0].color, Qt.rgba(0.75, 0.75, 0.75, 1));
        compare(stops[1].color, Qt.rgba(0.5, 0.5, 0.5, 1));
        compare(item("facePlate").radius, 14);
        compareColor(item("facePlate").fillColor, String(Qt.rgba(0.12, 0.12, 0.12, 1)), 1);
        compareColor(item("bolt").color, "#ffd60a", 1);
    }

    function test_theEyesAreTwoGreenCircles() {
        const eyes = Array.from(item("eyes").children).filter(child => child.radius);
        compare(eyes.map(eye => [eye.x, eye.width, eye.height, eye.radius]),
                [[0, 14, 14, 7], [32, 14, 14, 7]]);
        for (const eye of eyes)
            compareColor(eye.fillColor, "#30d158", 1);
    }

    function test_theRobotIsDrawnAsDescribed() {
        const image = grabImage(page);
        const icon = place("robotIcon");
        const at = (dx, dy) => String(image.pixel(icon.x + 55 + dx, icon.y + 65 + dy));
        compare(at(0, -60), "#ffd60a");
        compare(at(0, -48), "#98989d");
        compare(at(0, -43), String(page.color));
        compare(at(0, -6), String(Qt.rgba(0.12, 0.12, 0.12, 1)));
        compare(at(-16, -6), "#30d158");
        compare(at(16, -6), "#30d158");
        compare(at(0, 25), "#ffd60a");
        fuzzyCompare(image.red(icon.x + 55, icon.y + 65 - 39), 191, 2);
        fuzzyCompare(image.red(icon.x + 55, icon.y + 65 + 38), 128, 2);
    }

    function test_theRobotKeepsItsSizeInAnyWindow_data() {
        return [{ tag: "480", width: 480 }, { tag: "1600", width: 1600 }];
    }

    function test_theRobotKeepsItsSizeInAnyWindow(row) {
        page.width = row.width;
        page.height = row.width;
        compare(Qt.size(item("robotIcon").width, item("robotIcon").height), Qt.size(110, 130));
        compare(placeInIcon("head").width, 90);
    }

    Component {
        id: shapeComponent

        Rectangle {
            property alias radius: shape.radius

            width: 200
            height: 200
            color: "black"

            SmoothRectangle {
                id: shape
                anchors.fill: parent
                fillColor: "white"
            }
        }
    }

    Component {
        id: buttonComponent

        BigGreenButtonStyle {
            width: 432
        }
    }

    function test_allBackgroundsHaveContinuousCorners() {
        probe.put({ errorMessage: "An error." });
        for (const name of ["bigButtonBackground", "errorBackground", "cardBackground"])
            verify(item(name) instanceof SmoothRectangle, name);
    }

    function test_theTipCapsTheAntenna() {
        const icon = place("robotIcon");
        compare(String(grabImage(page).pixel(icon.x + 55, icon.y + 65 - 57)), "#ffd60a");
    }
}
