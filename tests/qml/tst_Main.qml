// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Cartloom

/// The window itself.
TestCase {
    id: testCase
    name: "Main"
    when: windowShown

    function test_theWindowOpensAt480By640AndIsNeverSmallerThan480By600() {
        probe.renew();
        const window = createTemporaryObject(mainComponent, testCase, { model: probe.model });
        compare(window.title, "Cartloom");
        compare(window.width, 480);
        compare(window.height, 640);
        compare(window.minimumWidth, 480);
        compare(window.minimumHeight, 600);
        compare(window.maximumWidth, mainlessWindow.maximumWidth);
        compare(window.maximumHeight, mainlessWindow.maximumHeight);
        compare(window.color, Qt.rgba(0.09, 0.1, 0.12, 1));
        tryVerify(() => window.visible);
    }

    function test_whatTheWindowDoesNotShowAtFirstIsNotMade() {
        probe.renew();
        const window = createTemporaryObject(mainComponent, testCase, { model: probe.model });
        tryVerify(() => window.active);
        grabImage(window.contentItem);
        const view = findChild(window.contentItem, "pageScroll").view;
        verify(view.contentHeight <= view.height);
        verify(!findChild(findChild(window.contentItem, "pageScroll"), "scrollBar").visible);
        for (const name of ["externalOfferAlert", "updateAlert", "resetAlert", "aboutView", "filePanel"])
            compare(findChild(window.contentItem, name).item, null, name);
    }

    function test_theIconIsTheRobot() {
        probe.renew();
        const window = createTemporaryObject(mainComponent, testCase, { model: probe.model });
        tryVerify(() => probe.hasIcon(window));
    }

    function test_keysThatClose_data() {
        return [{ tag: "W", key: Qt.Key_W }, { tag: "Q", key: Qt.Key_Q }];
    }

    function test_keysThatClose(row) {
        probe.renew();
        const window = createTemporaryObject(mainComponent, testCase, { model: probe.model });
        window.requestActivate();
        tryVerify(() => window.active);
        keyClick(row.key, Qt.ControlModifier);
        tryVerify(() => !window.visible);
    }

    function test_withoutAModelThereIsNoWindow() {
        ignoreWarning(/failed to create component/);
        verify(!probe.opensWithoutModel());
    }

    Window {
        id: mainlessWindow
    }

    Component {
        id: mainComponent

        Main {}
    }
}
