// SPDX-License-Identifier: MIT
pragma Singleton
import QtQuick

/// The text styles and the colours of the window, by role. It is dark whatever the system's setting is.
QtObject {
    readonly property font gameTitle: Qt.font({ pixelSize: 30, weight: Font.ExtraBold })
    readonly property font bigButton: Qt.font({ pixelSize: 22, weight: Font.Bold })
    readonly property font body: Qt.font({ pixelSize: 13 })
    readonly property font headline: Qt.font({ pixelSize: 13, weight: Font.Bold })
    readonly property font callout: Qt.font({ pixelSize: 12 })
    readonly property font caption: Qt.font({ pixelSize: 10 })
    readonly property font captionBold: Qt.font({ pixelSize: 10, weight: Font.Bold })
    readonly property font monospaced: Qt.font({ pixelSize: 11, family: monospacedFamily })
    readonly property string monospacedFamily: Qt.platform.os === "osx" ? "Menlo" : "monospace"

    readonly property color background: Qt.rgba(0.09, 0.1, 0.12, 1)
    readonly property color text: "white"
    readonly property color green: "#30d158"
    readonly property color yellow: "#ffd60a"
    readonly property color orange: "#ff9f0a"
    readonly property color red: "#ff453a"
    readonly property color grey: "#98989d"

    /// What is filled with the accent: the default button of an alert, a progress bar.
    readonly property color accent: "#0a6cff"
    readonly property color focusRing: "#4da3ff"
    /// What floats over the page.
    readonly property color raised: "#2b2d31"
    readonly property color raisedEdge: faded(0.14)
    readonly property color scrim: Qt.rgba(0, 0, 0, 0.55)
    readonly property color control: faded(0.15)
    readonly property color controlPressed: faded(0.28)
    readonly property color track: faded(0.16)
    readonly property color scrollHandle: faded(0.4)

    /// White at an opacity.
    function faded(opacity: real): color {
        return Qt.rgba(1, 1, 1, opacity);
    }

    /// A colour at an opacity.
    function tinted(base: color, opacity: real): color {
        return Qt.rgba(base.r, base.g, base.b, opacity);
    }
}
