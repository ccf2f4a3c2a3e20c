import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brimvale
import Brimvale.Core

// The preview of a clean: every entry under its group with a tick, what was left alone,
// the total of what is ticked, and then the run's progress with its Stop. Permanent
// entries are confirmed by holding, never by a click.
Popup {
    id: sheet
    readonly property var run: AppModel.cleanRun
    readonly property bool running: run.phase === "running"
    readonly property bool ruleMode: run.sheetMode === "saveFolderRule"
    signal confirmRuleRequested()

    modal: true
    closePolicy: Popup.NoAutoClose
    anchors.centerIn: Overlay.overlay
    width: Math.min(640, (parent ? parent.width : 640) - 80)
    height: Math.min(600, (parent ? parent.height : 600) - 80)
    padding: 20
    visible: run.isSheetPresented
    onOpened: holdButton.reset()
    background: Rectangle { color: Theme.card; radius: Theme.radius; border.color: Theme.border }

    function groups() {
        const seen = []
        for (const e of run.entries) if (seen.indexOf(e.group) < 0) seen.push(e.group)
        return seen
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 12

        Label {
            text: sheet.ruleMode ? "Confirm the rule" : "Review before cleaning"
            font.pixelSize: Theme.titleSize - 4
            font.bold: true
            color: Theme.text
        }
        Label {
            Layout.fillWidth: true
            wrapMode: Text.WordWrap
            color: Theme.secondaryText
            text: sheet.ruleMode
                  ? (run.entries.length === 0
                     ? "Nothing matched. You can still save an Autopilot rule and run it later."
                     : "Nothing moves until you confirm. Confirm Rule saves it. Run now asks again, then removes only the checked items.")
                  : "Nothing moves until you confirm. Each item is checked again right before it is touched."
        }

        ScrollView {
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            ColumnLayout {
                width: sheet.availableWidth - 16
                spacing: 6
                Repeater {
                    model: sheet.groups()
                    delegate: ColumnLayout {
                        required property string modelData
                        readonly property string groupName: modelData
                        Layout.fillWidth: true
                        spacing: 4
                        Label { text: groupName; font.bold: true; font.pixelSize: Theme.headingSize; color: Theme.text; topPadding: 6 }
                        Repeater {
                            model: sheet.run.entries.filter(e => e.group === groupName)
                            delegate: RowLayout {
                                required property var modelData
                                Layout.fillWidth: true
                                spacing: 10
                                CheckBox {
                                    checked: modelData.ticked
                                    enabled: !sheet.running
                                    onToggled: sheet.run.setEntryTicked(modelData.id, checked)
                                }
                                Label {
                                    text: modelData.permanent ? "⊘" : "↩"
                                    color: modelData.permanent ? Theme.danger : Theme.secondaryText
                                    font.pixelSize: Theme.headingSize
                                    Accessible.name: modelData.permanent ? "Deleted permanently" : "Moved to the Trash"
                                }
                                ColumnLayout {
                                    Layout.fillWidth: true
                                    spacing: 1
                                    RowLayout {
                                        Label { text: modelData.title; font.bold: true; color: Theme.text; elide: Text.ElideMiddle; Layout.fillWidth: true }
                                        Rectangle {
                                            radius: 6
                                            color: Theme.accentSoft
                                            implicitWidth: badge.implicitWidth + 12
                                            implicitHeight: badge.implicitHeight + 4
                                            Label { id: badge; anchors.centerIn: parent; text: modelData.badge; font.pixelSize: Theme.captionSize; color: Theme.accent }
                                        }
                                        Label { text: modelData.sizeText; color: Theme.secondaryText }
                                    }
                                    Label {
                                        Layout.fillWidth: true
                                        text: modelData.note
                                        wrapMode: Text.WordWrap
                                        font.pixelSize: Theme.captionSize
                                        color: Theme.tertiaryText
                                    }
                                }
                            }
                        }
                    }
                }
                Label {
                    visible: sheet.run.refusals.length > 0
                    text: "Left alone"
                    font.bold: true
                    font.pixelSize: Theme.headingSize
                    color: Theme.text
                    topPadding: 10
                }
                Repeater {
                    model: sheet.run.refusals
                    delegate: Label {
                        required property string modelData
                        Layout.fillWidth: true
                        wrapMode: Text.WordWrap
                        text: modelData
                        color: Theme.secondaryText
                        font.pixelSize: Theme.captionSize
                    }
                }
            }
        }

        // Progress of the run.
        ColumnLayout {
            visible: sheet.run.phase !== "idle"
            Layout.fillWidth: true
            spacing: 4
            ProgressBar { Layout.fillWidth: true; from: 0; to: 1; value: sheet.run.fraction }
            Label { text: sheet.run.statusLine; color: Theme.secondaryText }
            Label {
                visible: sheet.run.stopRequested
                text: "Stops before the next item. The item being moved now finishes."
                color: Theme.tertiaryText
                font.pixelSize: Theme.captionSize
            }
        }

        Label {
            visible: sheet.run.selectionHasPermanent && !sheet.running
            Layout.fillWidth: true
            wrapMode: Text.WordWrap
            text: "Some checked items will be deleted permanently. Hold the button to confirm."
            color: Theme.danger
        }

        RowLayout {
            Layout.fillWidth: true
            Label {
                text: sheet.run.selectedTotalText + " selected"
                font.bold: true
                color: Theme.text
                Layout.fillWidth: true
            }
            Button {
                text: sheet.running ? "Stop" : "Cancel"
                enabled: !sheet.running || !sheet.run.stopRequested
                onClicked: sheet.running ? sheet.run.requestStop() : sheet.run.dismissSheet()
            }
            Button {
                visible: sheet.ruleMode
                text: "Confirm Rule"
                enabled: !sheet.running && !sheet.run.closing
                onClicked: sheet.confirmRuleRequested()
            }
            Button {
                visible: !sheet.run.selectionHasPermanent
                text: sheet.ruleMode ? "Run Now" : "Move to Trash"
                highlighted: true
                enabled: !sheet.running && !sheet.run.closing && sheet.run.selectedCount > 0 && sheet.run.phase === "idle"
                onClicked: sheet.run.confirm()
            }
            HoldToConfirmButton {
                id: holdButton
                visible: sheet.run.selectionHasPermanent
                title: "Hold to Clean"
                confirmedTitle: "Cleaning…"
                disabled: sheet.running || sheet.run.closing || sheet.run.selectedCount === 0 || sheet.run.phase !== "idle"
                onAction: sheet.run.confirm()
            }
        }
    }
}
