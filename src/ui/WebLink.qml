// SPDX-License-Identifier: MIT
import QtQuick

/// A link to a page, which the system's browser opens. Without an address there is no link.
LinkButton {
    required property string address

    visible: address !== ""
    onClicked: Qt.openUrlExternally(address)
}
