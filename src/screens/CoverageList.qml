import QtQuick
import QtQuick.Layouts
import Brimvale.Core

// "Where the rest of the space is": big places other programs look after, each with its size
// (or why there is none) and the way to clear it by hand. Nothing here is ever cleaned.
Card {
    id: coverage
    title: "Where the rest of the space is"
    visible: AppModel.survey.coverageItems.count > 0

    Text {
        text: "Your system and other programs manage these. Brimvale does not touch them."
        font.pixelSize: Theme.captionSize
        color: Theme.secondaryText
        wrapMode: Text.Wrap
        Layout.fillWidth: true
    }
    Repeater {
        model: AppModel.survey.coverageItems
        delegate: ColumnLayout {
            id: place
            required property var model
            Layout.fillWidth: true
            Layout.topMargin: 4
            spacing: 2
            RowLayout {
                Layout.fillWidth: true
                Text {
                    text: place.model.title
                    font.pixelSize: Theme.bodySize
                    font.weight: Font.DemiBold
                    color: Theme.text
                    elide: Text.ElideRight
                    Layout.fillWidth: true
                }
                Text {
                    text: place.model.bytesText.length === 0 ? place.model.detail : place.model.bytesText
                    font.pixelSize: Theme.bodySize
                    color: place.model.bytesText.length === 0 ? Theme.warning : Theme.secondaryText
                }
            }
            Text {
                visible: place.model.bytesText.length > 0
                text: place.model.detail
                font.pixelSize: Theme.captionSize
                color: Theme.tertiaryText
                elide: Text.ElideMiddle
                Layout.fillWidth: true
            }
            Text {
                text: place.model.howTo
                font.pixelSize: Theme.captionSize
                color: Theme.secondaryText
                wrapMode: Text.Wrap
                Layout.fillWidth: true
            }
        }
    }
}
