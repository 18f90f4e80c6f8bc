// SPDX-License-Identifier: MIT
import QtQuick
import Cartloom

/// A text that is shown to the letter, whatever is in it, and never cut off.
Text {
    color: Theme.text
    font: Theme.body
    textFormat: Text.PlainText
    wrapMode: Text.Wrap

    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
