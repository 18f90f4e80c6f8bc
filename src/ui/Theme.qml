// SPDX-License-Identifier: MIT
pragma Singleton
import QtQuick

/// The text styles and the colours of the window, by role. It is dark whatever the system's setting is.
QtObject {
    id: theme

    /// The largest size, in points, that the system's texts have by default.
    readonly property real usualPoints: Qt.platform.os === "osx" ? 13 : 11
    /// How much larger than usual the user wants all texts.
    property real textScale: Math.max(1, Application.font.pointSize / usualPoints)

    readonly property font gameTitle: Qt.font({ pixelSize: scaled(30), weight: Font.ExtraBold })
    readonly property font bigButton: Qt.font({ pixelSize: scaled(22), weight: Font.Bold })
    readonly property font body: Qt.font({ pixelSize: scaled(13) })
    readonly property font headline: Qt.font({ pixelSize: scaled(13), weight: Font.Bold })
    readonly property font title2Bold: Qt.font({ pixelSize: scaled(17), weight: Font.Bold })
    readonly property font callout: Qt.font({ pixelSize: scaled(12) })
    readonly property font caption: Qt.font({ pixelSize: scaled(10) })
    readonly property font captionBold: Qt.font({ pixelSize: scaled(10), weight: Font.Bold })
    readonly property font caption2: Qt.font({ pixelSize: scaled(10) })
    readonly property font monospaced: Qt.font({ pixelSize: scaled(11), family: monospacedFamily })
    readonly property string monospacedFamily: Qt.platform.os === "osx" ? "Menlo" : "monospace"

    readonly property color background: Qt.rgba(0.09, 0.1, 0.12, 1)
    readonly property color text: "white"
    readonly property color green: "#30d158"
    readonly property color yellow: "#ffd60a"
    readonly property color orange: "#ff9f0a"
    readonly property color red: "#ff6961"
    readonly property color grey: "#98989d"

    /// What is filled with the accent: the default button of an alert, a progress bar.
    readonly property color accent: "#0a6cff"
    readonly property color accentPressed: Qt.darker(accent, 1.3)
    readonly property color link: "#4da3ff"
    readonly property color linkHovered: Qt.lighter(link, 1.25)
    readonly property color linkPressed: Qt.darker(link, 1.4)
    readonly property color divider: faded(0.15)
    readonly property color focusRing: "#4da3ff"
    /// What floats over the page.
    readonly property color raised: "#2b2d31"
    readonly property color raisedEdge: faded(0.14)
    readonly property color scrim: Qt.rgba(0, 0, 0, 0.55)
    readonly property color control: faded(0.15)
    readonly property color controlPressed: faded(0.28)
    /// Lies over what the pointer is on.
    readonly property color hoverTint: faded(0.08)
    readonly property color track: faded(0.16)
    readonly property color scrollHandle: faded(0.4)

    /// A size of text in pixels, as large as the user wants it.
    function scaled(size: real): int {
        return Math.round(size * textScale);
    }

    /// White at an opacity.
    function faded(opacity: real): color {
        return Qt.rgba(1, 1, 1, opacity);
    }

    /// A colour at an opacity.
    function tinted(base: color, opacity: real): color {
        return Qt.rgba(base.r, base.g, base.b, opacity);
    }
}
