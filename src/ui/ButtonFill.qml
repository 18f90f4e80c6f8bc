// SPDX-License-Identifier: MIT
import QtQuick

/// The colours of a kind of button, by its state.
QtObject {
    required property color normal
    required property color hovered
    required property color pressed
    required property color title
}
