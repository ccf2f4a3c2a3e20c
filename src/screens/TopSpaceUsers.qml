import QtQuick
import QtQuick.Layouts
import Brimvale.Core

// "Top space users": the largest known folders of the last survey, biggest bar full width.
Card {
    id: topUsers
    title: "Top space users"

    readonly property var folders: AppModel.topFolders

    Text {
        visible: topUsers.folders.length === 0
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
            required property var modelData
            // Each row's bar is measured against the largest folder of the list.
            readonly property real largest: {
                const folders = AppModel.topFolders
                let most = 0
                for (let i = 0; i < folders.length; ++i) most = Math.max(most, folders[i].bytes)
                return most
            }
            Layout.fillWidth: true
            spacing: 3
            RowLayout {
                Layout.fillWidth: true
                Text {
                    text: folderRow.modelData.name
                    font.pixelSize: Theme.bodySize
                    color: Theme.text
                    elide: Text.ElideRight
                    Layout.fillWidth: true
                }
                Text {
                    text: folderRow.modelData.bytesText
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
                    width: folderRow.largest > 0 ? parent.width * folderRow.modelData.bytes / folderRow.largest : 0
                    height: parent.height
                    radius: 2
                    color: Theme.accent
                }
            }
        }
    }
}
