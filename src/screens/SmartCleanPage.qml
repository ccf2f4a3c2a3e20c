import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import QtQuick.Layouts
import Brimvale.Core

// Smart Clean: the developer caches found on this disk, one card per tool family with its
// safety word and what stays, a tick per row, and the preview. Nothing moves from here:
// the preview comes first, and only what is ticked there is cleaned.
Item {
    id: page
    readonly property var smart: AppModel.smartClean
    readonly property bool scanning: page.smart.scanning
    readonly property var finds: page.smart.finds

    FolderDialog {
        id: rootChooser
        title: page.finds.pickerPrompt
        onAccepted: page.finds.addRoot(decodeURIComponent(String(selectedFolder).replace(/^file:\/\//, "")))
    }

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
                    text: page.scanning ? (page.smart.progress.length > 0 ? page.smart.progress : "Scanning…")
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
                    onClicked: page.smart.scan()
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
                visible: page.smart.hasScanned && !page.scanning && page.smart.cards.count === 0
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
                    required property var model
                    title: model.title
                    trailing: model.totalText + " · " + model.safety
                    Layout.leftMargin: 28
                    Layout.rightMargin: 28

                    Text {
                        visible: card.model.keptLine.length > 0
                        text: card.model.keptLine
                        font.pixelSize: Theme.captionSize
                        color: Theme.positive
                    }
                    Repeater {
                        model: card.model.rows
                        delegate: DevRow {}
                    }
                    RowLayout {
                        Layout.fillWidth: true
                        Text {
                            Layout.fillWidth: true
                            visible: card.model.hiddenCount > 0 && !page.smart.showSmallItems
                            text: card.model.hiddenCount + (card.model.hiddenCount === 1 ? " small item" : " small items") + " hidden"
                            font.pixelSize: Theme.captionSize
                            color: Theme.tertiaryText
                        }
                        Item { Layout.fillWidth: true }
                        Button {
                            flat: true
                            visible: card.model.choosableCount > 0
                            text: card.model.allTicked ? "Clear this group" : "Select this group"
                            onClicked: page.smart.setCardSelected(card.model.key, !card.model.allTicked)
                        }
                    }
                }
            }

            Card {
                id: projectsCard
                title: "Old project files"
                trailing: page.finds.projectsScanning ? "Looking\u2026" : page.finds.roots.length === 0 ? "" : page.finds.projectHits.count + (page.finds.projectHits.count === 1 ? " folder" : " folders")
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Text {
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    text: page.finds.explanation
                    font.pixelSize: Theme.captionSize
                    color: Theme.secondaryText
                }
                Repeater {
                    model: page.finds.roots
                    delegate: RowLayout {
                        id: rootRow
                        required property string modelData
                        Layout.fillWidth: true
                        Text { text: rootRow.modelData; color: Theme.text; font.pixelSize: Theme.bodySize; Layout.fillWidth: true; elide: Text.ElideMiddle }
                        Button { flat: true; text: "Remove"; onClicked: page.finds.removeRoot(rootRow.modelData) }
                    }
                }
                Repeater {
                    model: page.finds.projectHits
                    delegate: FindRow {
                        onToggled: (key, on) => page.finds.setHitSelected(key, on)
                    }
                }
                RowLayout {
                    Layout.fillWidth: true
                    spacing: 10
                    Button { text: "Add Folder\u2026"; onClicked: rootChooser.open() }
                    Item { Layout.fillWidth: true }
                    HoldToConfirmButton {
                        visible: !page.finds.permanent
                        prominent: false
                        title: "Hold to delete permanently"
                        confirmedTitle: "Permanent delete on"
                        onAction: page.finds.setPermanent(true)
                    }
                    Button {
                        visible: page.finds.permanent
                        text: "Keep Using the Trash"
                        onClicked: page.finds.setPermanent(false)
                    }
                }
                Text {
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    text: page.finds.permanent ? page.finds.permanentOnText : page.finds.holdText
                    font.pixelSize: Theme.captionSize
                    color: page.finds.permanent ? Theme.danger : Theme.tertiaryText
                }
            }

            Card {
                visible: page.finds.goneLeftovers.count + page.finds.possibleLeftovers.count > 0
                title: "App leftovers"
                trailing: "Moves to Trash"
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Repeater {
                    model: page.finds.goneLeftovers
                    delegate: FindRow {
                        onToggled: (key, on) => page.finds.setFindingSelected(key, on)
                    }
                }
                Text {
                    visible: page.finds.possibleLeftovers.count > 0
                    Layout.topMargin: 6
                    text: page.finds.possiblyHeading
                    font.pixelSize: Theme.captionSize
                    font.bold: true
                    color: Theme.secondaryText
                }
                Text {
                    visible: page.finds.possibleLeftovers.count > 0
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    text: page.finds.possiblyText
                    font.pixelSize: Theme.captionSize
                    color: Theme.tertiaryText
                }
                Repeater {
                    model: page.finds.possibleLeftovers
                    delegate: FindRow {
                        onToggled: (key, on) => page.finds.setFindingSelected(key, on)
                    }
                }
            }

            Card {
                visible: page.smart.reviewRows.count > 0
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
        required property var model
        property bool checkable: true
        Layout.fillWidth: true
        spacing: 10
        CheckBox {
            visible: row.checkable
            enabled: row.model.selectable && !page.scanning
            checked: row.model.selected
            Accessible.name: "Select " + row.model.title
            onToggled: page.smart.setRowSelected(row.model.key, checked)
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 1
            RowLayout {
                spacing: 6
                Text {
                    text: row.model.title
                    font.pixelSize: Theme.bodySize
                    font.weight: Font.DemiBold
                    color: Theme.text
                }
                Rectangle {
                    visible: row.model.badge.length > 0
                    radius: 4
                    color: Theme.accentSoft
                    implicitWidth: badgeText.implicitWidth + 10
                    implicitHeight: badgeText.implicitHeight + 4
                    Text {
                        id: badgeText
                        anchors.centerIn: parent
                        text: row.model.badge
                        font.pixelSize: Theme.captionSize
                        color: Theme.accent
                    }
                }
            }
            Text {
                Layout.fillWidth: true
                text: row.model.path
                font.pixelSize: Theme.captionSize
                color: Theme.tertiaryText
                elide: Text.ElideMiddle
            }
            Text {
                Layout.fillWidth: true
                visible: text.length > 0
                text: row.model.blockedReason.length > 0 ? row.model.blockedReason : row.model.note
                font.pixelSize: Theme.captionSize
                color: Theme.secondaryText
                wrapMode: Text.WordWrap
            }
            // The tool's own command, for people who prefer to run it themselves.
            Text {
                Layout.fillWidth: true
                visible: row.model.toolCommand.length > 0
                text: row.model.toolCommand
                font.pixelSize: Theme.captionSize
                font.family: "monospace"
                color: Theme.secondaryText
                elide: Text.ElideRight
            }
        }
        Text {
            text: row.model.sizeText
            font.pixelSize: Theme.bodySize
            font.family: "monospace"
            color: Theme.text
        }
    }

    // An old project folder or an app's leftovers: tick, title, where, why, size.
    component FindRow: RowLayout {
        id: find
        required property var model
        signal toggled(string key, bool on)
        Layout.fillWidth: true
        spacing: 10
        CheckBox {
            enabled: !page.scanning
            checked: find.model.selected
            Accessible.name: "Select " + find.model.title
            onToggled: find.toggled(find.model.key, checked)
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 1
            Text { text: find.model.title; font.pixelSize: Theme.bodySize; font.weight: Font.DemiBold; color: Theme.text }
            Text {
                Layout.fillWidth: true
                text: find.model.path !== undefined ? find.model.path : find.model.places
                font.pixelSize: Theme.captionSize
                color: Theme.tertiaryText
                elide: Text.ElideMiddle
            }
            Text {
                Layout.fillWidth: true
                text: find.model.note !== undefined ? find.model.note : find.model.evidence
                font.pixelSize: Theme.captionSize
                color: Theme.secondaryText
                wrapMode: Text.WordWrap
            }
        }
        Text { text: find.model.sizeText; font.pixelSize: Theme.bodySize; font.family: "monospace"; color: Theme.text }
    }
}
