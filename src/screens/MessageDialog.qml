import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// An alert with a title, a paragraph and OK: a fixed, readable width whatever the window's
// size, the text wrapping inside it and the button at its natural size.
Dialog {
    id: alert
    property string message
    modal: true
    anchors.centerIn: parent
    width: Math.min(440, (parent ? parent.width : 440) - 48)
    padding: 20
    standardButtons: Dialog.Ok
    contentItem: Label {
        text: alert.message
        wrapMode: Text.WordWrap
    }
}
