import QtQuick
import QtQuick.Layouts

// A section whose feature has not arrived yet: its title, tagline and a quiet note.
Item {
    id: page
    property string title: ""
    property string tagline: ""
    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 28
        spacing: 20
        SectionHeader { title: page.title; tagline: page.tagline }
        Card {
            Text {
                text: "This part of Brimvale is on its way."
                font.pixelSize: Theme.bodySize
                color: Theme.secondaryText
            }
        }
        Item { Layout.fillHeight: true }
    }
}
