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

    readonly property font gameTitle: Qt.font({ pixelSize: scaled(30), weight: Font.ExtraBold, family: roundedFamily })
    readonly property font bigButton: Qt.font({ pixelSize: scaled(22), weight: Font.Bold })
    readonly property font body: Qt.font({ pixelSize: scaled(13) })
    readonly property font headline: Qt.font({ pixelSize: scaled(13), weight: Font.Bold })
    readonly property font title2Bold: Qt.font({ pixelSize: scaled(17), weight: Font.Bold })
    readonly property font callout: Qt.font({ pixelSize: scaled(12) })
    readonly property font caption: Qt.font({ pixelSize: scaled(10) })
    readonly property font captionBold: Qt.font({ pixelSize: scaled(10), weight: Font.Bold })
    readonly property font caption2: Qt.font({ pixelSize: scaled(10) })
    readonly property font monospaced: Qt.font({ pixelSize: scaled(11), family: monospacedFamily })
    readonly property string roundedFamily: Qt.platform.os === "osx" ? ".AppleSystemUIFontRounded"
                                                                     : firstInstalled(roundedFamilies)
    readonly property list<string> roundedFamilies: ["Nunito", "Quicksand", "Varela Round",
                                                     "M PLUS Rounded 1c", "Comfortaa"]
    readonly property string monospacedFamily: Qt.platform.os === "osx" ? "Menlo" : "monospace"

    readonly property color background: Qt.rgba(0.09, 0.1, 0.12, 1)
    readonly property color text: "white"
    readonly property color green: "#30d158"
    readonly property color yellow: "#ffd60a"
    readonly property color orange: "#ff9f0a"
    readonly property color red: "#ff9a93"
    readonly property color grey: "#98989d"

    readonly property color accent: "#0b5fdc"
    readonly property color link: "#4da3ff"
    readonly property color linkHovered: Qt.lighter(link, 1.25)
    readonly property color linkPressed: "#b8daff"
    readonly property color progress: "#4da3ff"
    readonly property color divider: faded(0.15)
    readonly property color focusRing: "#4da3ff"
    /// What floats over the page.
    readonly property color raised: "#2b2d31"
    /// Opaque: half of an edge lies over the fill.
    readonly property color raisedEdge: "#494a4e"
    readonly property color scrim: Qt.rgba(0, 0, 0, 0.55)
    readonly property color controlEdge: faded(0.5)
    readonly property color track: faded(0.16)
    readonly property color scrollHandle: faded(0.4)
    readonly property color scrollHandleHovered: faded(0.6)
    /// Lies over the play button under the pointer: a lighter one would make its white title harder to read.
    readonly property color hoverShade: Qt.rgba(0, 0, 0, 0.12)

    readonly property ButtonFill ordinaryFill: ButtonFill {
        normal: theme.faded(0.15)
        hovered: theme.faded(0.22)
        pressed: theme.faded(0.3)
        title: theme.text
    }
    readonly property ButtonFill defaultFill: ButtonFill {
        normal: theme.accent
        hovered: "#0a6cff"
        pressed: Qt.darker(theme.accent, 1.3)
        title: theme.text
    }
    readonly property ButtonFill destructiveFill: ButtonFill {
        normal: theme.tinted(theme.red, 0.14)
        hovered: theme.tinted(theme.red, 0.2)
        pressed: theme.tinted(theme.red, 0.06)
        title: theme.red
    }
    /// A button that has no fill of its own.
    readonly property ButtonFill bareFill: ButtonFill {
        normal: "transparent"
        hovered: theme.faded(0.08)
        pressed: theme.faded(0.16)
        title: theme.text
    }

    /// The first of the families that is installed, else the default one.
    function firstInstalled(families: list<string>): string {
        const installed = Qt.fontFamilies();
        return Array.from(families).find(family => installed.includes(family)) ?? Application.font.family;
    }

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
