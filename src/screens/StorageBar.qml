import QtQuick
import QtQuick.Layouts
import Brimvale.Core

// The storage bar: what fills the disk, one coloured part per category of the last survey,
// free space last and light, with a legend of names and sizes under it. Before the first
// survey ends it shows used against free from the volume reading alone.
ColumnLayout {
    id: storageBar
    spacing: 8
    Layout.fillWidth: true

    readonly property var segments: AppModel.survey.segments
    readonly property bool surveyed: segments.length > 0

    // A piece of colour for one category; free space is the light one.
    component Swatch: Rectangle {
        property string segmentId
        color: {
            switch (segmentId) {
            case "apps": return Theme.segmentColors[0]
            case "developer": return Theme.segmentColors[1]
            case "downloads": return Theme.segmentColors[2]
            case "documents": return Theme.segmentColors[3]
            case "other": return Theme.segmentColors[5]
            default: return "#e6e9ef"
            }
        }
    }

    Rectangle {
        Layout.fillWidth: true
        implicitHeight: 14
        radius: 7
        color: "#e6e9ef"
        clip: true

        Row {
            visible: storageBar.surveyed
            anchors.fill: parent
            Repeater {
                model: storageBar.segments
                delegate: Swatch {
                    required property var modelData
                    segmentId: modelData.id
                    width: parent ? parent.width * modelData.fraction : 0
                    height: 14
                }
            }
        }
        Rectangle {
            visible: !storageBar.surveyed
            width: AppModel.space.totalBytes > 0 ? parent.width * (1 - AppModel.space.freeBytes / AppModel.space.totalBytes) : 0
            height: parent.height
            radius: 7
            color: Theme.accent
        }
    }

    Flow {
        visible: storageBar.surveyed
        Layout.fillWidth: true
        spacing: 14
        Repeater {
            model: storageBar.segments
            delegate: Row {
                id: legendItem
                required property var modelData
                visible: modelData.bytes > 0
                spacing: 6
                Swatch {
                    segmentId: legendItem.modelData.id
                    width: 10
                    height: 10
                    radius: 3
                    anchors.verticalCenter: parent.verticalCenter
                    border.color: legendItem.modelData.id === "free" ? Theme.border : "transparent"
                }
                Text {
                    text: legendItem.modelData.name
                    font.pixelSize: Theme.captionSize
                    color: Theme.secondaryText
                }
                Text {
                    text: legendItem.modelData.bytesText
                    font.pixelSize: Theme.captionSize
                    font.weight: Font.DemiBold
                    color: Theme.text
                }
            }
        }
    }

    Text {
        visible: AppModel.survey.status.length > 0
        text: AppModel.survey.status + (AppModel.survey.bytesText.length > 0 ? "  " + AppModel.survey.bytesText : "")
        font.pixelSize: Theme.captionSize
        color: Theme.tertiaryText
    }
}
