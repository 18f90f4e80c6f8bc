// SPDX-License-Identifier: MIT
import QtQuick

Window {
    width: 480
    height: 640
    visible: true
    color: "#171a1f"

    Text {
        text: "Quillet!64"
        color: "white"
    }
}
