import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brimvale
import Brimvale.Core

// Auto-Sort: what the rules could tidy now, the rules with their counts and a run preview
// each, rules suggested from the files in Downloads, and the editor.
Item {
    id: page
    property string title: "Auto-Sort"
    property string tagline: "Downloads that tidy themselves."
    readonly property var rules: AppModel.sortRules
    readonly property var auto: AppModel.autoSort
    readonly property bool noRules: rules.ruleRows.length === 0
    property string deleting: ""

    onVisibleChanged: if (visible) page.auto.refreshSamples()

    function openEditor(ruleID) {
        if (ruleID) page.rules.editRule(ruleID)
        else page.rules.newDraft()
        editor.open()
    }
    // A rule the older Downloads file also holds is previewed and run the older way, with
    // that rule's own checks.
    function runRule(ruleID, older) {
        if (older) page.auto.previewRule(ruleID)
        else page.auto.startPreview(ruleID ? [ruleID] : [])
        runSheet.open()
    }

    AutoSortEditor {
        id: editor
        onPreviewRequested: runSheet.open()
    }
    AutoSortRunSheet { id: runSheet }

    Dialog {
        id: deleteQuestion
        objectName: "autoSortDelete"
        title: "Delete this rule?"
        modal: true
        anchors.centerIn: parent
        standardButtons: Dialog.Cancel | Dialog.Ok
        Label {
            width: 380
            wrapMode: Text.WordWrap
            text: page.deleting !== "" ? page.rules.deleteExplanation(page.deleting) : ""
        }
        onAccepted: page.rules.deleteRule(page.deleting)
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
                title: page.noRules ? "Say it in a sentence."
                                    : (page.auto.tidyCountLine !== "" ? page.auto.tidyCountLine
                                                                       : "Nothing matches right now. Run a rule any time from the list below.")
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Label {
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    color: Theme.secondaryText
                    text: page.noRules
                          ? "\u201CPut screenshots in Pictures.\u201D \u201CTrash installers older than 7 days.\u201D Each rule shows exactly which files it would touch before anything moves."
                          : (page.auto.suggestions.length > 0 ? "Pick a suggestion below, or add a rule." : "Add a rule to start.")
                }
                RowLayout {
                    Button { text: "Add a rule"; highlighted: true; onClicked: page.openEditor("") }
                    Button { visible: !page.noRules; text: "Preview all rules"; onClicked: page.runRule("", false) }
                }
            }

            Card {
                visible: !page.noRules
                title: "Rules"
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Repeater {
                    model: page.rules.ruleRows
                    delegate: RowLayout {
                        id: row
                        required property var modelData
                        Layout.fillWidth: true
                        spacing: 8
                        Switch {
                            checked: row.modelData.isEnabled
                            onToggled: page.rules.setRuleEnabled(row.modelData.id, checked)
                            Accessible.name: "Rule on"
                        }
                        ColumnLayout {
                            Layout.fillWidth: true
                            spacing: 2
                            Label { text: row.modelData.name; font.bold: true; color: row.modelData.isEnabled ? Theme.text : Theme.tertiaryText; elide: Text.ElideRight; Layout.fillWidth: true }
                            Label {
                                text: row.modelData.summary + " \u00B7 " + (page.auto.matchCounts[row.modelData.id] || 0) + " match right now"
                                color: Theme.secondaryText
                                font.pixelSize: Theme.captionSize
                                elide: Text.ElideRight
                                Layout.fillWidth: true
                            }
                        }
                        Button { text: "Run now"; onClicked: page.runRule(row.modelData.id, row.modelData.isOlder) }
                        Button { text: "Edit"; onClicked: page.openEditor(row.modelData.id) }
                        Button { text: "Delete"; onClicked: { page.deleting = row.modelData.id; deleteQuestion.open() } }
                    }
                }
            }

            Label {
                text: "SUGGESTED FROM YOUR FILES"
                font.pixelSize: Theme.captionSize
                font.weight: Font.DemiBold
                color: Theme.secondaryText
                Layout.leftMargin: 28
            }
            Label {
                visible: page.auto.suggestions.length === 0
                text: "Old installers, screenshots, receipts, files from one site. Until then, describe a rule yourself."
                color: Theme.tertiaryText
                wrapMode: Text.WordWrap
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Layout.fillWidth: true
            }
            Repeater {
                model: page.auto.suggestions
                delegate: Card {
                    id: suggestion
                    required property var modelData
                    Layout.leftMargin: 28
                    Layout.rightMargin: 28
                    title: modelData.title
                    trailing: modelData.bytesText
                    RowLayout {
                        Layout.fillWidth: true
                        Label { text: suggestion.modelData.evidence; color: Theme.secondaryText; wrapMode: Text.WordWrap; Layout.fillWidth: true }
                        Button { text: "Use this rule"; onClicked: { page.auto.useSuggestion(suggestion.modelData.id); editor.open() } }
                        Button { text: "Dismiss"; flat: true; onClicked: page.auto.dismissSuggestion(suggestion.modelData.id) }
                    }
                }
            }
            Item { implicitHeight: 20 }
        }
    }
}
