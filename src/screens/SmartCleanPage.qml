import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brimvale.Core

// Smart Clean: the developer caches found on this disk, one card per tool family with its
// safety word and what stays, a tick per row, and the preview. Nothing moves from here:
// the preview comes first, and only what is ticked there is cleaned.
Item {
    id: page
    readonly property var smart: AppModel.smartClean
    readonly property bool scanning: AppModel.devScanning

    Shortcut {
        sequence: "Ctrl+Return"
        enabled: page.visible && page.smart.selectedCount > 0
        onActivated: page.smart.preview()
    }

    ScrollView {
        anchors.fill: parent
        contentWidth: availableWidth
        ColumnLayout {
            width: page.width
            spacing: Theme.spacing
            Item { implicitHeight: 12 }
            SectionHeader {
                title: "Smart Clean"
                tagline: "Files that rebuild themselves"
                Layout.leftMargin: 28
                Layout.rightMargin: 28
            }

            RowLayout {
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Layout.fillWidth: true
                spacing: 10
                BusyIndicator {
                    running: page.scanning
                    visible: page.scanning
                    implicitWidth: 22
                    implicitHeight: 22
                }
                Text {
                    Layout.fillWidth: true
                    font.pixelSize: Theme.bodySize
                    color: Theme.secondaryText
                    elide: Text.ElideRight
                    text: page.scanning ? (AppModel.devProgress.length > 0 ? AppModel.devProgress : "Scanning…")
                        : !page.smart.hasScanned ? ""
                        : page.smart.selectedCount > 0
                            ? page.smart.selectedCount + (page.smart.selectedCount === 1 ? " item" : " items") + " selected · " + page.smart.selectedText
                            : page.smart.reclaimableText + " comes back automatically. Select what to clean."
                }
                Button {
                    text: "Select recommended"
                    enabled: !page.scanning && page.smart.recommendedCount > 0
                    ToolTip.visible: hovered
                    ToolTip.text: "Select the caches that rebuild themselves when a tool needs them"
                    onClicked: page.smart.selectRecommended()
                }
                CheckBox {
                    text: "Show small items"
                    checked: page.smart.showSmallItems
                    onToggled: page.smart.showSmallItems = checked
                }
                Button {
                    text: "Rescan"
                    enabled: !page.scanning
                    onClicked: AppModel.scanDeveloperCaches()
                }
                Button {
                    text: "Preview…"
                    highlighted: true
                    enabled: !page.scanning && page.smart.selectedCount > 0
                    ToolTip.visible: hovered
                    ToolTip.text: "See exactly what would be cleaned. Nothing moves in the preview. (Ctrl+Return)"
                    onClicked: page.smart.preview()
                }
            }

            Text {
                visible: page.smart.hasScanned && !page.scanning && page.smart.cards.length === 0
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Layout.fillWidth: true
                wrapMode: Text.WordWrap
                font.pixelSize: Theme.bodySize
                color: Theme.secondaryText
                text: "No developer caches on this disk right now."
            }

            Repeater {
                model: page.smart.cards
                delegate: Card {
                    id: card
                    required property var modelData
                    title: modelData.title
                    trailing: modelData.totalText + " · " + modelData.safety
                    Layout.leftMargin: 28
                    Layout.rightMargin: 28

                    Text {
                        visible: card.modelData.keptLine.length > 0
                        text: card.modelData.keptLine
                        font.pixelSize: Theme.captionSize
                        color: Theme.positive
                    }
                    Repeater {
                        model: card.modelData.rows.concat(card.modelData.smallRows)
                        delegate: DevRow {}
                    }
                    RowLayout {
                        Layout.fillWidth: true
                        Text {
                            Layout.fillWidth: true
                            visible: card.modelData.hiddenCount > 0 && !page.smart.showSmallItems
                            text: card.modelData.hiddenCount + (card.modelData.hiddenCount === 1 ? " small item" : " small items") + " hidden"
                            font.pixelSize: Theme.captionSize
                            color: Theme.tertiaryText
                        }
                        Item { Layout.fillWidth: true }
                        Button {
                            flat: true
                            visible: card.modelData.choosableCount > 0
                            text: card.modelData.allTicked ? "Clear this group" : "Select this group"
                            onClicked: page.smart.setCardSelected(card.modelData.id, !card.modelData.allTicked)
                        }
                    }
                }
            }

            Card {
                visible: page.smart.reviewRows.length > 0
                title: "Shown for size only"
                trailing: "Smart Clean will not remove these"
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Repeater {
                    model: page.smart.reviewRows
                    delegate: DevRow { checkable: false }
                }
            }
            Item { implicitHeight: 20 }
        }
    }

    // One place on disk: tick, title, where it is and why, badge, size.
    component DevRow: RowLayout {
        id: row
        required property var modelData
        property bool checkable: true
        Layout.fillWidth: true
        spacing: 10
        CheckBox {
            visible: row.checkable
            enabled: row.modelData.selectable && !page.scanning
            checked: row.modelData.selected
            Accessible.name: "Select " + row.modelData.title
            onToggled: page.smart.setRowSelected(row.modelData.id, checked)
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 1
            RowLayout {
                spacing: 6
                Text {
                    text: row.modelData.title
                    font.pixelSize: Theme.bodySize
                    font.weight: Font.DemiBold
                    color: Theme.text
                }
                Rectangle {
                    visible: row.modelData.badge.length > 0
                    radius: 4
                    color: Theme.accentSoft
                    implicitWidth: badgeText.implicitWidth + 10
                    implicitHeight: badgeText.implicitHeight + 4
                    Text {
                        id: badgeText
                        anchors.centerIn: parent
                        text: row.modelData.badge
                        font.pixelSize: Theme.captionSize
                        color: Theme.accent
                    }
                }
            }
            Text {
                Layout.fillWidth: true
                text: row.modelData.path
                font.pixelSize: Theme.captionSize
                color: Theme.tertiaryText
                elide: Text.ElideMiddle
            }
            Text {
                Layout.fillWidth: true
                visible: text.length > 0
                text: row.modelData.blockedReason.length > 0 ? row.modelData.blockedReason : row.modelData.note
                font.pixelSize: Theme.captionSize
                color: Theme.secondaryText
                wrapMode: Text.WordWrap
            }
        }
        Text {
            text: row.modelData.sizeText
            font.pixelSize: Theme.bodySize
            font.family: "monospace"
            color: Theme.text
        }
    }
}
