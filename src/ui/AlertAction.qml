// SPDX-License-Identifier: MIT
import QtQuick.Templates as T

/// One way to answer an alert.
T.Action {
    enum Role {
        Ordinary,
        Default,
        Cancel,
        Destructive
    }

    property int role: AlertAction.Ordinary
    /// Whether it has the keyboard when the alert appears: where nothing is the default, what changes
    /// nothing.
    property bool focused: role === AlertAction.Default
}
