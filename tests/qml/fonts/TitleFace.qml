// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import ".."

/// The face of the title where rounded ones are installed.
PageCase {
    id: testCase
    name: "Title"

    function test_theTitleIsInTheFirstInstalledRoundedFace() {
        const installed = Qt.fontFamilies();
        verify(!installed.includes("Nunito"));
        verify(installed.includes("Quicksand") && installed.includes("Comfortaa"));
        compare(item("gameTitle").font.family, "Quicksand");
        const other = createTemporaryObject(textComponent, testCase, { font: item("gameTitle").font });
        compare(other.implicitWidth, item("gameTitle").implicitWidth);
        other.font.family = "DejaVu Sans";
        verify(Math.abs(other.implicitWidth - item("gameTitle").implicitWidth) > 1);
    }

    Component {
        id: textComponent

        Text {
            text: "Quillet!64"
        }
    }
}
