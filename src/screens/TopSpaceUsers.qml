import QtQuick
import QtQuick.Layouts
import Brimvale.Core

// "Top space users": the largest known folders of the last survey, biggest bar full width.
Card {
    id: topUsers
    title: "Top space users"

    readonly property var folders: AppModel.survey.topFolders

    Text {
        visible: topUsers.folders.count === 0
        text: "Large folders show up here after the first look through your disk."
        font.pixelSize: Theme.bodySize
        color: Theme.secondaryText
        wrapMode: Text.Wrap
        Layout.fillWidth: true
    }
    Repeater {
        model: topUsers.folders
        delegate: ColumnLayout {
            id: folderRow
            required property var model
            Layout.fillWidth: true
            spacing: 3
            RowLayout {
                Layout.fillWidth: true
                Text {
                    text: folderRow.model.name
                    font.pixelSize: Theme.bodySize
                    color: Theme.text
                    elide: Text.ElideRight
                    Layout.fillWidth: true
                }
                Text {
                    text: folderRow.model.bytesText
                    font.pixelSize: Theme.bodySize
                    color: Theme.secondaryText
                }
            }
            Rectangle {
                Layout.fillWidth: true
                implicitHeight: 4
                radius: 2
                color: Theme.accentSoft
                Rectangle {
                    // Each row's bar is measured against the largest folder of the list.
                    width: parent.width * folderRow.model.share
                    height: parent.height
                    radius: 2
                    color: Theme.accent
                }
            }
        }
    }
}
