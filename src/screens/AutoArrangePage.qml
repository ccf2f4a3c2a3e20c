import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import QtQuick.Layouts
import Brimvale.Core

// Auto-Arrange: name patterns whose finished downloads move to their folder. With no pattern
// the page is the form for the first one; otherwise each pattern has its card with its status,
// what was already in Downloads before it, and the way to switch it off or remove it.
Item {
    id: page
    property string title: "Auto-Arrange"
    property string tagline: "Tag it, and it files itself."
    readonly property var live: AppModel.arrange
    readonly property bool empty: page.live.patterns.length === 0
    property string arrangeRule: ""

    Connections {
        target: page.live
        function onOfferChanged() {
            if (page.live.offer.length > 0) page.openArrangeNow(page.live.offer)
            else arrangeNowSheet.close()
        }
    }
    function patternById(id) {
        for (const p of page.live.patterns) if (p.id === id) return p
        return null
    }
    function openArrangeNow(id) {
        page.arrangeRule = id
        arrangeNowSheet.open()
    }

    // The form that makes a pattern: which names, where they go, what is already there.
    component PatternForm: ColumnLayout {
        id: form
        property string folder: ""
        property string error: ""
        signal saved()
        spacing: 8
        Layout.fillWidth: true
        Text { text: "1 · WHICH NAMES"; font.pixelSize: Theme.captionSize; font.weight: Font.DemiBold; color: Theme.secondaryText }
        TextField {
            id: glob
            placeholderText: "vk-"
            Layout.preferredWidth: 260
            onTextChanged: { form.error = ""; page.live.previewPattern(text) }
        }
        Text {
            text: page.live.sheetPreview.valid ? page.live.sheetPreview.description : ""
            visible: text.length > 0
            font.pixelSize: Theme.bodySize
            color: Theme.text
        }
        Text { text: "2 · WHERE THEY GO"; font.pixelSize: Theme.captionSize; font.weight: Font.DemiBold; color: Theme.secondaryText; Layout.topMargin: 8 }
        RowLayout {
            Button { text: "Choose Folder…"; onClicked: folderChooser.open() }
            Text {
                text: form.folder.length > 0 ? form.folder : "No folder chosen yet"
                font.pixelSize: Theme.bodySize
                color: form.folder.length > 0 ? Theme.text : Theme.tertiaryText
                elide: Text.ElideMiddle
                Layout.fillWidth: true
            }
        }
        FolderDialog {
            id: folderChooser
            onAccepted: form.folder = decodeURIComponent(String(selectedFolder).replace(/^file:\/\//, ""))
        }
        Text { text: "ALREADY IN DOWNLOADS"; font.pixelSize: Theme.captionSize; font.weight: Font.DemiBold; color: Theme.secondaryText; Layout.topMargin: 8 }
        Text {
            text: page.live.sheetPreview.matchLine || "Matching files appear here as you type."
            wrapMode: Text.Wrap
            font.pixelSize: Theme.bodySize
            color: Theme.secondaryText
            Layout.fillWidth: true
        }
        Repeater {
            model: page.live.sheetPreview.valid ? page.live.sheetPreview.matches : []
            delegate: Text { required property var modelData; text: modelData; font.pixelSize: Theme.bodySize; color: Theme.text; elide: Text.ElideMiddle; Layout.fillWidth: true }
        }
        Text { text: "Nothing already in Downloads moves until you say so."; font.pixelSize: Theme.captionSize; color: Theme.tertiaryText }
        Text { text: "A move on this disk does not free space; it keeps Downloads tidy."; font.pixelSize: Theme.captionSize; color: Theme.tertiaryText }
        Text { text: form.error; visible: text.length > 0; color: Theme.danger; font.pixelSize: Theme.bodySize; wrapMode: Text.Wrap; Layout.fillWidth: true }
        Button {
            text: "Save Pattern"
            highlighted: true
            onClicked: {
                form.error = page.live.savePattern(glob.text, form.folder)
                if (form.error.length === 0) { glob.text = ""; form.folder = ""; form.saved() }
            }
        }
    }

    ScrollView {
        anchors.fill: parent
        contentWidth: availableWidth
        ColumnLayout {
            width: page.width
            spacing: Theme.spacing
            Item { implicitHeight: 12 }
            SectionHeader { title: page.title; tagline: page.tagline; Layout.leftMargin: 28; Layout.rightMargin: 28 }
            Text {
                text: "Files named with a tag go to their folder the moment they finish downloading."
                font.pixelSize: Theme.bodySize
                color: Theme.text
                wrapMode: Text.Wrap
                Layout.fillWidth: true
                Layout.leftMargin: 28
                Layout.rightMargin: 28
            }

            Card {
                visible: page.empty
                title: "YOUR FIRST PATTERN"
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Text {
                    text: "A file moves a few seconds after its download finishes, while Brimvale is running. Files that were in Downloads before you added the pattern stay put until you choose Arrange now. Every move is in History."
                    wrapMode: Text.Wrap
                    font.pixelSize: Theme.bodySize
                    color: Theme.secondaryText
                    Layout.fillWidth: true
                }
                PatternForm {}
            }

            Repeater {
                model: page.live.patterns
                delegate: Card {
                    id: patternCard
                    required property var modelData
                    title: modelData.glob + "  →  " + modelData.folderName
                    Layout.leftMargin: 28
                    Layout.rightMargin: 28
                    RowLayout {
                        Layout.fillWidth: true
                        Text { text: patternCard.modelData.status; font.pixelSize: Theme.bodySize; color: Theme.secondaryText; Layout.fillWidth: true; wrapMode: Text.Wrap }
                        Switch {
                            checked: patternCard.modelData.isEnabled
                            onToggled: page.live.setPatternEnabled(patternCard.modelData.id, checked)
                        }
                        Button {
                            text: "Remove…"
                            flat: true
                            onClicked: { removeDialog.ruleId = patternCard.modelData.id; removeDialog.open() }
                        }
                    }
                    Text {
                        text: patternCard.modelData.note
                        visible: text.length > 0
                        font.pixelSize: Theme.bodySize
                        color: Theme.text
                    }
                    ColumnLayout {
                        visible: patternCard.modelData.waiting.length > 0
                        Layout.fillWidth: true
                        Text { text: "ALREADY IN DOWNLOADS"; font.pixelSize: Theme.captionSize; font.weight: Font.DemiBold; color: Theme.secondaryText }
                        Text {
                            text: "They were there before the pattern, so they stay put unless you move them."
                            wrapMode: Text.Wrap
                            font.pixelSize: Theme.bodySize
                            color: Theme.secondaryText
                            Layout.fillWidth: true
                        }
                        Button { text: "Arrange now…"; onClicked: page.openArrangeNow(patternCard.modelData.id) }
                    }
                }
            }

            Card {
                visible: page.live.settling.length > 0
                title: "Waiting for downloads to finish"
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Repeater {
                    model: page.live.settling
                    delegate: Text { required property var modelData; text: modelData; font.pixelSize: Theme.bodySize; color: Theme.text }
                }
            }

            Card {
                visible: !page.empty
                title: "Add a pattern"
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Text { text: "Files already in Downloads move only when you say so."; font.pixelSize: Theme.bodySize; color: Theme.secondaryText }
                PatternForm {}
            }
            Item { implicitHeight: 20 }
        }
    }

    Dialog {
        id: removeDialog
        property string ruleId: ""
        title: "Remove this pattern?"
        anchors.centerIn: parent
        modal: true
        standardButtons: Dialog.Ok | Dialog.Cancel
        Text { text: page.live.removeExplanation(removeDialog.ruleId); wrapMode: Text.Wrap; width: 360 }
        onAccepted: page.live.removePattern(ruleId)
    }

    Dialog {
        id: arrangeNowSheet
        title: "Arrange now"
        anchors.centerIn: parent
        modal: true
        width: 460
        readonly property var pattern: page.patternById(page.arrangeRule)
        readonly property var files: pattern ? pattern.waiting : []
        property var unticked: ({})
        readonly property int ticked: files.filter(f => !unticked[f.path]).length
        onAboutToShow: unticked = ({})
        onClosed: page.live.clearOffer()
        ColumnLayout {
            width: parent.width
            Text {
                text: arrangeNowSheet.files.length > 0
                      ? "These were already in Downloads before the pattern. Untick anything you want left alone."
                      : "No files in Downloads match right now."
                wrapMode: Text.Wrap
                Layout.fillWidth: true
            }
            Repeater {
                model: arrangeNowSheet.files
                delegate: CheckBox {
                    required property var modelData
                    text: modelData.name
                    checked: !arrangeNowSheet.unticked[modelData.path]
                    onToggled: {
                        const u = Object.assign({}, arrangeNowSheet.unticked)
                        u[modelData.path] = !checked
                        arrangeNowSheet.unticked = u
                    }
                }
            }
            Text {
                text: "Tick at least one file."
                visible: arrangeNowSheet.files.length > 0 && arrangeNowSheet.ticked === 0
                color: Theme.danger
            }
            RowLayout {
                Item { Layout.fillWidth: true }
                Button { text: "Cancel"; onClicked: arrangeNowSheet.close() }
                Button {
                    text: "Move"
                    highlighted: true
                    enabled: arrangeNowSheet.ticked > 0
                    onClicked: {
                        page.live.arrangeNow(page.arrangeRule,
                                             arrangeNowSheet.files.filter(f => !arrangeNowSheet.unticked[f.path]).map(f => f.path))
                        arrangeNowSheet.close()
                    }
                }
            }
        }
    }
}
