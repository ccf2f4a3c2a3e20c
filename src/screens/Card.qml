import QtQuick
import QtQuick.Layouts

// A white panel with a heading; content goes inside its column.
Rectangle {
    id: card
    property string title: ""
    property string trailing: ""
    default property alias content: column.data
    color: Theme.card
    radius: Theme.radius
    border.color: Theme.border
    implicitHeight: column.implicitHeight + 32
    Layout.fillWidth: true

    ColumnLayout {
        id: column
        anchors.fill: parent
        anchors.margins: 16
        spacing: 8
        RowLayout {
            visible: card.title.length > 0
            Layout.fillWidth: true
            Text {
                text: card.title
                font.pixelSize: Theme.headingSize
                font.weight: Font.DemiBold
                color: Theme.text
                Layout.fillWidth: true
            }
            Text {
                text: card.trailing
                visible: text.length > 0
                font.pixelSize: Theme.captionSize
                color: Theme.secondaryText
            }
        }
    }
}
