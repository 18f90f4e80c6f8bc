// SPDX-License-Identifier: MIT
import QtQuick
import QtQuick.Templates as T
import Cartloom

/// Monospaced text that can be selected and copied; it scrolls when it needs more room than there is.
ScrollPane {
    id: pane

    required property string text
    /// What the text element is called.
    required property string textName

    implicitHeight: textArea.implicitHeight
    contentHeight: textArea.implicitHeight

    T.TextArea {
        id: textArea
        objectName: pane.textName
        rightPadding: 12
        implicitHeight: contentHeight
        text: pane.text
        textFormat: TextEdit.PlainText
        wrapMode: TextEdit.Wrap
        readOnly: true
        selectByMouse: true
        selectByKeyboard: true
        color: Theme.text
        selectionColor: Theme.accent
        selectedTextColor: Theme.text
        font: Theme.monospaced
        // A hidden item keeps the focus in Qt 6.4.
        onVisibleChanged: visible || !activeFocus || (focus = false)

        Accessible.readOnly: true
        Accessible.selectableText: true
        Accessible.name: text
    }

    FocusRing {
        parent: pane
        visible: textArea.activeFocus
        innerRadius: 3
    }
}
