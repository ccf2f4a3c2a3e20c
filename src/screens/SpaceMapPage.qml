import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import QtQuick.Layouts
import Brimvale.Core

// Every byte under a folder or drive: choose a root, map it, look at the largest folders as
// tiles and as a list, drill in and back, and compare with a saved snapshot to see what grew.
Item {
    id: page
    property string title: "Space Map"
    property string tagline: "Every byte, biggest first"
    readonly property var sm: AppModel.spaceMap
    property string removedText: ""
    property string pendingDeleteId: ""

    FolderDialog {
        id: folderDialog
        title: "Choose any folder or drive to map."
        onAccepted: page.sm.chooseRoot(String(folderDialog.selectedFolder))
    }

    Dialog {
        id: deleteDialog
        title: "Delete this snapshot?"
        modal: true
        anchors.centerIn: parent
        standardButtons: Dialog.Cancel | Dialog.Ok
        onAccepted: {
            page.removedText = page.sm.snapshotRemovedText(page.pendingDeleteId)
            page.sm.deleteSnapshot(page.pendingDeleteId)
        }
        Label { text: "The snapshot goes; folders on disk are not touched."; width: 340; wrapMode: Text.WordWrap }
    }

    ScrollView {
        id: scroller
        anchors.fill: parent
        contentWidth: availableWidth
        ColumnLayout {
            width: scroller.availableWidth
            spacing: Theme.spacing
            Item { implicitHeight: 12 }
            SectionHeader {
                title: page.title
                tagline: page.tagline
                Layout.leftMargin: 28
                Layout.rightMargin: 28
            }

            // ---- the root, the estimate, the scan -----------------------------------------
            Card {
                title: "Choose any folder or drive to map."
                Layout.leftMargin: 28
                Layout.rightMargin: 28

                Flow {
                    Layout.fillWidth: true
                    spacing: 8
                    Button {
                        text: "Choose folder…"
                        enabled: !page.sm.scanning
                        onClicked: folderDialog.open()
                    }
                    Repeater {
                        model: page.sm.volumes
                        delegate: Button {
                            required property var modelData
                            text: modelData.name + " · " + modelData.freeText + " free"
                            enabled: !page.sm.scanning
                            highlighted: page.sm.rootPath === modelData.path
                            onClicked: page.sm.chooseRoot(modelData.path)
                        }
                    }
                }
                Text {
                    text: page.sm.rootName + "  ·  " + page.sm.rootPath
                    font.pixelSize: Theme.headingSize
                    font.weight: Font.DemiBold
                    color: Theme.text
                    elide: Text.ElideMiddle
                    Layout.fillWidth: true
                }
                Text {
                    visible: !page.sm.scanning
                    text: page.sm.estimateText
                    font.pixelSize: Theme.bodySize
                    color: Theme.secondaryText
                    wrapMode: Text.WordWrap
                    Layout.fillWidth: true
                }
                RowLayout {
                    spacing: 10
                    Button {
                        text: page.sm.startTitle
                        enabled: !page.sm.scanning
                        highlighted: true
                        onClicked: page.sm.start()
                    }
                    Button {
                        text: "Stop"
                        visible: page.sm.scanning
                        enabled: !page.sm.stopRequested
                        onClicked: page.sm.cancel()
                    }
                }
                ColumnLayout {
                    visible: page.sm.scanning
                    Layout.fillWidth: true
                    spacing: 4
                    ProgressBar {
                        Layout.fillWidth: true
                        indeterminate: page.sm.progressFraction < 0
                        value: Math.max(0, page.sm.progressFraction)
                    }
                    Text {
                        text: page.sm.countedText + " counted · " + page.sm.elapsedText
                              + (page.sm.timeLeftText.length > 0 ? " · " + page.sm.timeLeftText : "")
                        font.pixelSize: Theme.bodySize
                        color: Theme.text
                    }
                    Text {
                        text: page.sm.progressText
                        font.pixelSize: Theme.captionSize
                        color: Theme.secondaryText
                        elide: Text.ElideMiddle
                        Layout.fillWidth: true
                    }
                }
            }

            // ---- the map ----------------------------------------------------------------
            Card {
                visible: page.sm.hasMap
                title: page.sm.nodeName + " · " + page.sm.nodeBytesText
                Layout.leftMargin: 28
                Layout.rightMargin: 28

                Text {
                    text: page.sm.mapSummary
                    font.pixelSize: Theme.captionSize
                    color: Theme.secondaryText
                }
                // The bytes above leave out files this folder shares with others through
                // hard links: they are counted once, in the other folder.
                Text {
                    visible: page.sm.nodeSharedText.length > 0
                    text: page.sm.nodeSharedText
                    font.pixelSize: Theme.captionSize
                    color: Theme.secondaryText
                }

                RowLayout {
                    spacing: 4
                    Button {
                        text: "Back"
                        enabled: page.sm.canGoBack
                        onClicked: page.sm.goBack()
                    }
                    Repeater {
                        model: page.sm.trail
                        delegate: RowLayout {
                            required property var modelData
                            spacing: 4
                            Text { text: modelData.index > 0 ? "›" : ""; color: Theme.tertiaryText }
                            Text {
                                text: modelData.name
                                color: Theme.accent
                                font.pixelSize: Theme.bodySize
                                MouseArea {
                                    anchors.fill: parent
                                    cursorShape: Qt.PointingHandCursor
                                    onClicked: page.sm.goToTrail(modelData.index)
                                }
                            }
                        }
                    }
                }
                Text {
                    visible: text.length > 0
                    text: page.sm.partialText
                    color: Theme.warning
                    font.pixelSize: Theme.bodySize
                }
                Text {
                    visible: page.sm.unreadableText.length > 0
                    text: page.sm.unreadableText + " " + page.sm.unreadableHint
                    color: Theme.secondaryText
                    font.pixelSize: Theme.captionSize
                    wrapMode: Text.WordWrap
                    Layout.fillWidth: true
                }

                RowLayout {
                    Layout.fillWidth: true
                    spacing: 16
                    Item {
                        id: mapArea
                        Layout.fillWidth: true
                        Layout.minimumWidth: 280
                        implicitHeight: 340
                        readonly property var tiles: page.sm.trail.length >= 0 && width > 0
                                                     ? page.sm.treemap(width, height) : []
                        Rectangle { anchors.fill: parent; color: "#eef0f4"; radius: 6 }
                        Repeater {
                            model: mapArea.tiles
                            delegate: Rectangle {
                                required property var modelData
                                x: modelData.x + 1
                                y: modelData.y + 1
                                width: Math.max(0, modelData.width - 2)
                                height: Math.max(0, modelData.height - 2)
                                radius: 4
                                color: modelData.isRest ? "#c9ced8"
                                                        : Theme.segmentColors[modelData.colorIndex % (Theme.segmentColors.length - 1)]
                                opacity: tileMouse.containsMouse ? 0.85 : 1
                                Column {
                                    anchors.fill: parent
                                    anchors.margins: 6
                                    visible: parent.width > 70 && parent.height > 34
                                    Text {
                                        width: parent.width
                                        text: modelData.name
                                        color: modelData.isRest ? Theme.text : "white"
                                        font.pixelSize: Theme.bodySize
                                        font.weight: Font.DemiBold
                                        elide: Text.ElideRight
                                    }
                                    Text {
                                        width: parent.width
                                        text: modelData.bytesText
                                        color: modelData.isRest ? Theme.secondaryText : "#f0f4ff"
                                        font.pixelSize: Theme.captionSize
                                    }
                                }
                                MouseArea {
                                    id: tileMouse
                                    anchors.fill: parent
                                    hoverEnabled: true
                                    enabled: !modelData.isRest
                                    cursorShape: Qt.PointingHandCursor
                                    onClicked: page.sm.openChild(modelData.path)
                                }
                                ToolTip.visible: tileMouse.containsMouse
                                ToolTip.text: modelData.name + " · " + modelData.bytesText
                            }
                        }
                    }
                    ColumnLayout {
                        Layout.preferredWidth: 300
                        Layout.maximumWidth: 300
                        Layout.fillWidth: false
                        Layout.alignment: Qt.AlignTop
                        spacing: 2
                        Text {
                            visible: page.sm.emptyNodeText.length > 0
                            text: page.sm.emptyNodeText
                            color: Theme.secondaryText
                            font.pixelSize: Theme.bodySize
                            wrapMode: Text.WordWrap
                            Layout.fillWidth: true
                        }
                        Repeater {
                            model: page.sm.nodeChildren
                            delegate: Rectangle {
                                id: childRow
                                required property var model
                                Layout.fillWidth: true
                                implicitHeight: 40
                                radius: 6
                                color: rowMouse.containsMouse ? Theme.selection : "transparent"
                                ColumnLayout {
                                    anchors.fill: parent
                                    anchors.leftMargin: 8
                                    anchors.rightMargin: 8
                                    spacing: 2
                                    RowLayout {
                                        Layout.fillWidth: true
                                        Rectangle {
                                            implicitWidth: 10; implicitHeight: 10; radius: 2
                                            color: Theme.segmentColors[childRow.model.colorIndex % (Theme.segmentColors.length - 1)]
                                        }
                                        Text {
                                            text: childRow.model.name
                                            elide: Text.ElideMiddle
                                            font.pixelSize: Theme.bodySize
                                            color: Theme.text
                                            Layout.fillWidth: true
                                        }
                                        Text {
                                            text: childRow.model.bytesText
                                            font.pixelSize: Theme.bodySize
                                            font.weight: Font.DemiBold
                                            color: Theme.text
                                        }
                                    }
                                    Rectangle {
                                        Layout.fillWidth: true
                                        implicitHeight: 4
                                        radius: 2
                                        color: "#e6e9ef"
                                        Rectangle {
                                            width: parent.width * childRow.model.share
                                            height: parent.height
                                            radius: 2
                                            color: Theme.accent
                                        }
                                    }
                                }
                                MouseArea {
                                    id: rowMouse
                                    anchors.fill: parent
                                    hoverEnabled: true
                                    cursorShape: Qt.PointingHandCursor
                                    onClicked: page.sm.openChild(childRow.model.path)
                                    ToolTip.visible: containsMouse && childRow.model.sharedText.length > 0
                                    ToolTip.text: childRow.model.sharedText
                                }
                            }
                        }
                    }
                }
            }

            // ---- snapshots -------------------------------------------------------------
            Card {
                title: "Snapshots"
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Layout.bottomMargin: 28

                RowLayout {
                    spacing: 10
                    Button {
                        text: "Save snapshot"
                        enabled: page.sm.canSaveSnapshot
                        onClicked: { page.removedText = ""; page.sm.saveSnapshot() }
                    }
                    Text {
                        visible: page.removedText.length > 0
                        text: page.removedText
                        color: Theme.secondaryText
                        font.pixelSize: Theme.captionSize
                    }
                }
                Repeater {
                    model: page.sm.snapshots
                    delegate: RowLayout {
                        id: snapshotRow
                        required property var model
                        Layout.fillWidth: true
                        spacing: 10
                        Text {
                            text: snapshotRow.model.dateText
                            font.pixelSize: Theme.bodySize
                            font.weight: snapshotRow.model.selected ? Font.DemiBold : Font.Normal
                            color: Theme.text
                        }
                        Text {
                            text: snapshotRow.model.countedText + " · " + snapshotRow.model.rootPath
                            font.pixelSize: Theme.captionSize
                            color: Theme.secondaryText
                            elide: Text.ElideMiddle
                            Layout.fillWidth: true
                        }
                        Button {
                            text: snapshotRow.model.selected ? "Stop comparing" : "Compare with this snapshot"
                            enabled: snapshotRow.model.selected || snapshotRow.model.sameRoot
                            onClicked: snapshotRow.model.selected ? page.sm.stopComparing() : page.sm.compareWith(snapshotRow.model.key)
                        }
                        Button {
                            text: "Delete"
                            onClicked: { page.pendingDeleteId = snapshotRow.model.key; deleteDialog.open() }
                        }
                    }
                }
                Text {
                    visible: page.sm.comparisonText.length > 0
                    text: page.sm.comparisonText
                    color: Theme.secondaryText
                    font.pixelSize: Theme.bodySize
                }
                Repeater {
                    model: page.sm.deltas
                    delegate: RowLayout {
                        required property var modelData
                        Layout.fillWidth: true
                        spacing: 10
                        // arrow.up.right / arrow.down.right
                        Text {
                            text: modelData.grew ? "↗" : "↘"
                            font.pixelSize: Theme.headingSize
                            color: modelData.grew ? Theme.danger : Theme.positive
                        }
                        Text {
                            text: modelData.name
                            font.pixelSize: Theme.bodySize
                            color: Theme.text
                            elide: Text.ElideMiddle
                            Layout.fillWidth: true
                        }
                        Text {
                            text: modelData.oldText + " → " + modelData.newText
                            font.pixelSize: Theme.captionSize
                            color: Theme.secondaryText
                        }
                        Text {
                            text: modelData.changeText
                            font.pixelSize: Theme.bodySize
                            font.weight: Font.DemiBold
                            color: modelData.grew ? Theme.danger : Theme.positive
                        }
                    }
                }
            }
        }
    }
}
