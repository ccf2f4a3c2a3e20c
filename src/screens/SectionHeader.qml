import QtQuick
import QtQuick.Layouts

// The title and tagline at the top of every section.
ColumnLayout {
    property string title: ""
    property string tagline: ""
    spacing: 2
    Layout.fillWidth: true
    Text {
        text: parent.title
        font.pixelSize: Theme.titleSize
        font.weight: Font.Bold
        color: Theme.text
    }
    Text {
        text: parent.tagline
        font.pixelSize: Theme.bodySize
        color: Theme.secondaryText
    }
}
