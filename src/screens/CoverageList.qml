import QtQuick
import QtQuick.Layouts
import Brimvale.Core

// "Where the rest of the space is": big places other programs look after, each with its size
// (or why there is none) and the way to clear it by hand. Nothing here is ever cleaned.
Card {
    id: coverage
    title: "Where the rest of the space is"
    visible: AppModel.coverageItems.length > 0

    Text {
        text: "Your system and other programs manage these. Brimvale does not touch them."
        font.pixelSize: Theme.captionSize
        color: Theme.secondaryText
        wrapMode: Text.Wrap
        Layout.fillWidth: true
    }
    Repeater {
        model: AppModel.coverageItems
        delegate: ColumnLayout {
            id: place
            required property var modelData
            Layout.fillWidth: true
            Layout.topMargin: 4
            spacing: 2
            RowLayout {
                Layout.fillWidth: true
                Text {
                    text: place.modelData.title
                    font.pixelSize: Theme.bodySize
                    font.weight: Font.DemiBold
                    color: Theme.text
                    elide: Text.ElideRight
                    Layout.fillWidth: true
                }
                Text {
                    text: place.modelData.bytes === null ? place.modelData.detail : place.modelData.bytesText
                    font.pixelSize: Theme.bodySize
                    color: place.modelData.bytes === null ? Theme.warning : Theme.secondaryText
                }
            }
            Text {
                visible: place.modelData.bytes !== null
                text: place.modelData.detail
                font.pixelSize: Theme.captionSize
                color: Theme.tertiaryText
                elide: Text.ElideMiddle
                Layout.fillWidth: true
            }
            Text {
                text: place.modelData.howTo
                font.pixelSize: Theme.captionSize
                color: Theme.secondaryText
                wrapMode: Text.Wrap
                Layout.fillWidth: true
            }
        }
    }
}
