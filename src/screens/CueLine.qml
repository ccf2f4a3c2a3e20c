import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brimvale
import Brimvale.Core

// The one-line hint of the screen being shown, with its button when it has one and a way to
// put it away for good.
Rectangle {
    id: line
    readonly property var g: AppModel.guidance
    visible: g.activeCue.length > 0
    implicitHeight: row.implicitHeight + 16
    radius: Theme.radius
    color: Theme.accentSoft
    border.color: Theme.border

    RowLayout {
        id: row
        anchors.fill: parent
        anchors.margins: 8
        anchors.leftMargin: 14
        spacing: 10
        Label {
            Layout.fillWidth: true
            wrapMode: Text.WordWrap
            text: line.g.cueText
            color: Theme.text
        }
        Button {
            visible: line.g.cueButton.length > 0
            text: line.g.cueButton.replace("&", "&&")
            highlighted: true
            onClicked: line.g.pressCueButton()
        }
        ToolButton {
            text: "\u00d7"
            Accessible.name: "Dismiss"
            onClicked: line.g.dismissCue()
        }
    }
}
