import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import QtQuick.Layouts
import Brimvale.Core

// Duplicates: the folders to search, the smallest file compared, Scan and Stop with live
// progress, then every group of identical files with the copy that stays and the ones
// that may go. Nothing moves from here: the review buttons open the preview.
Item {
    id: page
    property string title: "Duplicates"
    property string tagline: "Copies, confirmed byte for byte"
    readonly property var dup: AppModel.duplicates
    readonly property var texts: dup.texts

    FolderDialog {
        id: chooser
        title: page.texts.chooseFolder
        onAccepted: page.dup.addRoot(selectedFolder)
    }

    ScrollView {
        anchors.fill: parent
        contentWidth: availableWidth
        ColumnLayout {
            width: page.width
            spacing: Theme.spacing
            Item { implicitHeight: 12 }
            SectionHeader {
                title: page.title
                tagline: page.tagline
                Layout.leftMargin: 28
                Layout.rightMargin: 28
            }

            Card {
                title: "Folders to search"
                trailing: page.dup.summary
                Layout.leftMargin: 28
                Layout.rightMargin: 28

                Repeater {
                    model: page.dup.roots
                    delegate: RowLayout {
                        required property var modelData
                        Layout.fillWidth: true
                        spacing: 8
                        Text {
                            text: modelData.shownPath
                            font.pixelSize: Theme.bodySize
                            color: Theme.text
                            elide: Text.ElideMiddle
                            Layout.fillWidth: true
                        }
                        Button {
                            text: "Remove"
                            flat: true
                            enabled: !page.dup.scanning
                            Accessible.name: page.texts.removeRoot
                            ToolTip.visible: hovered
                            ToolTip.text: page.texts.removeRoot
                            onClicked: page.dup.removeRoot(modelData.id)
                        }
                    }
                }
                RowLayout {
                    Layout.fillWidth: true
                    spacing: 10
                    Button {
                        text: "Add Folder…"
                        enabled: !page.dup.scanning
                        onClicked: chooser.open()
                    }
                    Item { Layout.fillWidth: true }
                    Text {
                        text: "Smallest file"
                        font.pixelSize: Theme.bodySize
                        color: Theme.secondaryText
                    }
                    Repeater {
                        model: page.dup.minimumChoices
                        delegate: Button {
                            required property var modelData
                            text: modelData.text
                            checkable: true
                            checked: page.dup.minimumBytes === modelData.bytes
                            highlighted: checked
                            enabled: !page.dup.scanning
                            onClicked: page.dup.minimumBytes = modelData.bytes
                        }
                    }
                }
                Text {
                    text: page.texts.minimumCaption
                    font.pixelSize: Theme.captionSize
                    color: Theme.tertiaryText
                    Layout.alignment: Qt.AlignRight
                }
                RowLayout {
                    Layout.fillWidth: true
                    spacing: 12
                    Button {
                        text: page.dup.scanning ? "Stop" : "Scan"
                        highlighted: !page.dup.scanning
                        onClicked: page.dup.scanning ? page.dup.stopScan() : page.dup.startScan()
                    }
                    BusyIndicator {
                        visible: page.dup.scanning
                        running: visible
                        implicitWidth: 22
                        implicitHeight: 22
                    }
                    Text {
                        text: page.dup.progress
                        visible: text.length > 0
                        font.pixelSize: Theme.bodySize
                        color: Theme.secondaryText
                        Layout.fillWidth: true
                        elide: Text.ElideRight
                    }
                }
            }

            RowLayout {
                visible: page.dup.groups.count > 0
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Layout.topMargin: 6
                spacing: 12
                ColumnLayout {
                    spacing: 2
                    Layout.fillWidth: true
                    Text {
                        text: page.texts.heading
                        font.pixelSize: Theme.captionSize
                        font.weight: Font.DemiBold
                        font.letterSpacing: 0.6
                        color: Theme.tertiaryText
                    }
                    Text {
                        text: page.texts.previewCaption
                        font.pixelSize: Theme.captionSize
                        color: Theme.secondaryText
                    }
                }
                Button {
                    text: page.texts.reviewAll
                    highlighted: true
                    onClicked: page.dup.reviewAll()
                }
            }

            Repeater {
                model: page.dup.groups
                delegate: Card {
                    id: groupCard
                    required property var model
                    title: model.title
                    trailing: model.detail
                    Layout.leftMargin: 28
                    Layout.rightMargin: 28

                    Repeater {
                        model: groupCard.model.files
                        delegate: Rectangle {
                            id: fileRow
                            required property var model
                            Layout.fillWidth: true
                            implicitHeight: 46
                            radius: 7
                            color: model.isKept ? Theme.accentSoft : "transparent"
                            TapHandler {
                                acceptedButtons: Qt.RightButton
                                onTapped: fileMenu.popup()
                            }
                            Menu {
                                id: fileMenu
                                MenuItem {
                                    text: page.texts.keepThis
                                    enabled: !fileRow.model.isKept
                                    onTriggered: page.dup.keepCopy(groupCard.model.key, fileRow.model.path)
                                }
                                MenuItem {
                                    text: page.texts.trashOne
                                    enabled: !fileRow.model.isKept
                                    onTriggered: page.dup.reviewCopy(groupCard.model.key, fileRow.model.path)
                                }
                            }
                            RowLayout {
                                anchors.fill: parent
                                anchors.leftMargin: 10
                                anchors.rightMargin: 6
                                spacing: 10
                                ColumnLayout {
                                    spacing: 1
                                    Layout.fillWidth: true
                                    Text {
                                        text: fileRow.model.name
                                        font.pixelSize: Theme.bodySize
                                        font.weight: fileRow.model.isKept ? Font.DemiBold : Font.Normal
                                        color: Theme.text
                                        elide: Text.ElideMiddle
                                        Layout.fillWidth: true
                                    }
                                    Text {
                                        text: fileRow.model.folder
                                        font.pixelSize: Theme.captionSize
                                        color: Theme.secondaryText
                                        elide: Text.ElideMiddle
                                        Layout.fillWidth: true
                                    }
                                }
                                Text {
                                    text: fileRow.model.sizeText
                                    font.pixelSize: Theme.captionSize
                                    color: Theme.secondaryText
                                }
                                Text {
                                    text: fileRow.model.dateText
                                    font.pixelSize: Theme.captionSize
                                    color: Theme.secondaryText
                                    Layout.preferredWidth: 86
                                }
                                Text {
                                    text: fileRow.model.isKept ? page.texts.keeperMark : page.texts.notKeptMark
                                    font.pixelSize: Theme.captionSize
                                    font.weight: Font.DemiBold
                                    color: fileRow.model.isKept ? Theme.positive : Theme.tertiaryText
                                    Layout.preferredWidth: 96
                                }
                                // Kept rows hold the same room, so every row's columns line up.
                                Button {
                                    opacity: fileRow.model.isKept ? 0 : 1
                                    enabled: !fileRow.model.isKept
                                    text: page.texts.keepInstead
                                    flat: true
                                    onClicked: page.dup.keepCopy(groupCard.model.key, fileRow.model.path)
                                }
                                Button {
                                    opacity: fileRow.model.isKept ? 0 : 1
                                    enabled: !fileRow.model.isKept
                                    text: "Trash…"
                                    flat: true
                                    Accessible.name: page.texts.trashOne
                                    ToolTip.visible: hovered
                                    ToolTip.text: page.texts.trashOneCaption
                                    onClicked: page.dup.reviewCopy(groupCard.model.key, fileRow.model.path)
                                }
                            }
                        }
                    }
                    RowLayout {
                        Layout.fillWidth: true
                        Item { Layout.fillWidth: true }
                        Button {
                            text: page.texts.cleanGroup
                            enabled: groupCard.model.reclaimableBytes > 0
                            ToolTip.visible: hovered
                            ToolTip.text: page.texts.cleanGroupCaption
                            onClicked: page.dup.reviewGroup(groupCard.model.key)
                        }
                    }
                }
            }
            Item { implicitHeight: 20 }
        }
    }
}
