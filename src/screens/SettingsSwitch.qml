import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// A setting that is on or off: its words on the left, the switch on the right. `checked`
// follows the setting; a flip only asks for the change through `toggled`.
RowLayout {
    id: row
    property string text: ""
    property bool checked: false
    signal toggled(bool on)
    Layout.fillWidth: true
    spacing: 12
    Label {
        text: row.text
        Layout.fillWidth: true
        wrapMode: Text.WordWrap
        color: Theme.text
    }
    Switch {
        checked: row.checked
        Accessible.name: row.text
        onToggled: row.toggled(checked)
    }
}
