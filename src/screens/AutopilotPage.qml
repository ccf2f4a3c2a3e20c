import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import QtQuick.Layouts
import Brimvale.Core

// Autopilot: the saved folder rules, each with its facts, its bound and "Run now", and the
// builder in three steps. "Continue to Preview" opens the shared preview sheet in rule mode,
// whose "Confirm Rule" saves the rule with the figures of that preview.
Item {
    id: page
    property string title: "Autopilot"
    property string tagline: "Build folders gone on a schedule."
    readonly property var rules: AppModel.folderRules
    readonly property var draft: rules.draft
    property int removing: -1

    FolderDialog {
        id: chooser
        title: "Choose the folder whose contents this rule should clean."
        onAccepted: page.rules.chooseFolder(decodeURIComponent(String(selectedFolder).replace(/^file:\/\//, "")))
    }

    Dialog {
        id: removeQuestion
        title: "Remove this rule?"
        modal: true
        anchors.centerIn: parent
        standardButtons: Dialog.Cancel | Dialog.Ok
        Label {
            text: page.removing >= 0 && page.removing < page.rules.rules.length
                  ? "\u201C" + page.rules.rules[page.removing].name + "\u201D stops running. Files it already moved are not put back."
                  : ""
            wrapMode: Text.WordWrap
        }
        onAccepted: page.rules.removeRule(page.removing)
    }

    Shortcut {
        sequence: "Ctrl+Return"
        enabled: page.visible
        onActivated: page.rules.continueToPreview()
    }

    ScrollView {
        anchors.fill: parent
        contentWidth: availableWidth
        ColumnLayout {
            width: page.width
            spacing: Theme.spacing
            Item { implicitHeight: 12 }
            SectionHeader { title: page.title; tagline: page.tagline; Layout.leftMargin: 28; Layout.rightMargin: 28 }

            Card {
                title: page.rules.rules.length === 0 ? "Your first rule goes here" : page.rules.countText
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Layout.fillWidth: true
                Label {
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    color: Theme.secondaryText
                    text: page.rules.rules.length === 0
                          ? "Pick a folder and say what to remove, in plain English. After one confirmed preview, it runs on the schedule you choose and reports what it cleared."
                          : "Every run stays within what you confirmed in its preview. A run that finds far more is skipped, and you are told."
                }
                Repeater {
                    model: page.rules.rules
                    delegate: RowLayout {
                        id: row
                        required property var modelData
                        required property int index
                        Layout.fillWidth: true
                        ColumnLayout {
                            Layout.fillWidth: true
                            spacing: 2
                            Label { text: row.modelData.name + (row.modelData.isEnabled ? "" : " (off)"); font.bold: true; color: Theme.text }
                            Label { text: row.modelData.folder; color: Theme.secondaryText; font.pixelSize: Theme.captionSize }
                            Label { text: row.modelData.detailLines.join(" · "); color: Theme.secondaryText; font.pixelSize: Theme.captionSize }
                            Label { visible: row.modelData.scheduleNote !== ""; text: row.modelData.scheduleNote; color: Theme.tertiaryText; font.pixelSize: Theme.captionSize }
                            Label { visible: row.modelData.boundText !== ""; text: row.modelData.boundText; color: Theme.tertiaryText; font.pixelSize: Theme.captionSize }
                        }
                        Button { text: "Run now"; enabled: !page.rules.running; onClicked: page.rules.runNow(row.index) }
                        Button { text: "Remove"; onClicked: { page.removing = row.index; removeQuestion.open() } }
                    }
                }
            }

            Card {
                title: "New Autopilot rule"
                trailing: "Say what to clear and where. Preview once, and it is saved."
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Layout.fillWidth: true

                Label { text: "1 · WHERE TO CLEAN"; font.bold: true; color: Theme.secondaryText }
                RowLayout {
                    Label { text: page.draft.folder !== "" ? page.draft.folder : "No folder chosen yet"; color: Theme.text; Layout.fillWidth: true; elide: Text.ElideMiddle }
                    Button { text: "Choose Folder…"; onClicked: chooser.open() }
                }
                Label { text: "Home, Desktop, Documents, Downloads, and Library can\u2019t be the folder you clean."; color: Theme.tertiaryText; font.pixelSize: Theme.captionSize }

                Label { text: "2 · WHAT TO REMOVE"; font.bold: true; color: Theme.secondaryText }
                TextField {
                    Layout.fillWidth: true
                    placeholderText: "delete subfolders named dist older than 15 days"
                    text: page.draft.phrase
                    onEditingFinished: page.rules.setSentence(text)
                    Accessible.name: "Describe the cleanup"
                }
                Label { text: page.draft.parseError !== "" ? page.draft.parseError : page.draft.interpretation; color: page.draft.parseError !== "" ? Theme.danger : Theme.secondaryText; wrapMode: Text.WordWrap; Layout.fillWidth: true }
                Label { text: "Plain English fills the controls below. If a sentence isn\u2019t recognized, set them yourself."; color: Theme.tertiaryText; font.pixelSize: Theme.captionSize; wrapMode: Text.WordWrap; Layout.fillWidth: true }
                RowLayout {
                    Label { text: "Names" }
                    TextField { Layout.fillWidth: true; text: page.draft.namesText; onEditingFinished: page.rules.setDraftField("namesText", text) }
                }
                CheckBox { text: "Match folders only"; checked: page.draft.directoriesOnly; onToggled: page.rules.setDraftField("directoriesOnly", checked) }
                RowLayout {
                    CheckBox { text: "Older than"; checked: page.draft.useAge; onToggled: page.rules.setDraftField("useAge", checked) }
                    SpinBox { from: 1; to: 3650; value: page.draft.minimumAgeDays; onValueModified: page.rules.setDraftField("minimumAgeDays", value) }
                    Label { text: "days" }
                }
                RowLayout {
                    CheckBox { text: "Keep only the newest"; checked: page.draft.useKeepNewest; onToggled: page.rules.setDraftField("useKeepNewest", checked) }
                    SpinBox { from: 0; to: 999; value: page.draft.keepNewest; onValueModified: page.rules.setDraftField("keepNewest", value) }
                }
                CheckBox { text: "Include subfolders"; checked: page.draft.includeSubfolders; onToggled: page.rules.setDraftField("includeSubfolders", checked) }
                CheckBox { id: more; text: "More ways to match: extensions, patterns" }
                RowLayout {
                    visible: more.checked
                    Label { text: "Extensions" }
                    TextField { Layout.fillWidth: true; text: page.draft.extensionsText; onEditingFinished: page.rules.setDraftField("extensionsText", text) }
                    Label { text: "Pattern" }
                    TextField { Layout.fillWidth: true; text: page.draft.glob; onEditingFinished: page.rules.setDraftField("glob", text) }
                }

                Label { text: "3 · HOW AND WHEN"; font.bold: true; color: Theme.secondaryText }
                CheckBox { text: "Delete permanently"; checked: page.draft.permanent; onToggled: page.rules.setDraftField("permanent", checked) }
                Label { text: "Permanent delete cannot be undone. Protected folders are still refused."; color: Theme.tertiaryText; font.pixelSize: Theme.captionSize }
                ComboBox {
                    model: ["off", "hourly", "daily", "weekly"]
                    displayText: ({ off: "Off", hourly: "Hourly", daily: "Daily", weekly: "Weekly" })[page.draft.schedule]
                    currentIndex: model.indexOf(page.draft.schedule)
                    onActivated: page.rules.setDraftField("schedule", model[currentIndex])
                }
                Label {
                    visible: page.draft.permanent
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    color: Theme.danger
                    text: "This rule deletes permanently. The preview still doesn\u2019t delete anything. Saving the rule lets later scheduled runs delete matching items for good."
                }
                RowLayout {
                    Button {
                        text: "Continue to Preview"
                        highlighted: true
                        onClicked: page.rules.continueToPreview()
                        ToolTip.visible: hovered
                        ToolTip.text: "See exactly what this rule would clear (Ctrl+Return)"
                    }
                    Label { text: "Nothing moves in the preview."; color: Theme.secondaryText }
                }
            }
            Item { implicitHeight: 20 }
        }
    }
}
