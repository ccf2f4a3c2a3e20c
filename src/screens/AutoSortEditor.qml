import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import QtQuick.Layouts
import Brimvale
import Brimvale.Core

// The rule editor: the rule said in a sentence or stacked from rows, how it was understood
// (chips that drop their part when clicked, the words that weren't used), what happens to the
// files and when, and the files it would touch right now. Ctrl+Return saves.
Popup {
    id: editor
    readonly property var rules: AppModel.sortRules
    readonly property var auto: AppModel.autoSort
    readonly property var draft: editor.rules.draftSort
    readonly property bool hasDraft: draft.name !== undefined
    signal previewRequested()

    objectName: "autoSortEditor"
    modal: true
    closePolicy: Popup.CloseOnEscape
    anchors.centerIn: Overlay.overlay
    width: Math.min(720, (parent ? parent.width : 720) - 60)
    height: (parent ? parent.height : 700) - 40
    padding: 20
    background: Rectangle { color: Theme.card; radius: Theme.radius; border.color: Theme.border }
    onOpened: {
        phrase.text = editor.rules.draftPhrase
        rows.clear()
        if (editor.rules.inputMode === "build") for (const r of editor.rules.draftConditionRows()) rows.append(r)
        editor.auto.refreshSamples()
    }

    function save() { if (editor.rules.saveDraft()) editor.close() }
    function pushRows() {
        const list = []
        for (let i = 0; i < rows.count; ++i) list.push(rows.get(i))
        editor.rules.buildDraft(list, matchAny.checked ? "any" : "all")
    }
    function startBuilding() {
        editor.rules.inputMode = "build"
        rows.clear()
        for (const r of editor.rules.draftConditionRows()) rows.append(r)
        if (rows.count === 0) rows.append({ field: "fileExtension", op: "is", text: "", place: "downloads" })
    }

    Shortcut { sequences: ["Ctrl+Return", "Ctrl+Enter"]; enabled: editor.opened; onActivated: editor.save() }
    FolderDialog {
        id: folderChooser
        title: "Choose the folder these files go to."
        onAccepted: editor.rules.chooseDraftFolder(decodeURIComponent(String(selectedFolder).replace(/^file:\/\//, "")))
    }
    FolderDialog {
        id: downloadsChooser
        title: "Choose your Downloads folder."
        onAccepted: AppModel.folderAccess.grantFolderAccess("downloads", decodeURIComponent(String(selectedFolder).replace(/^file:\/\//, "")))
    }
    ListModel { id: rows }

    component Heading: Label {
        font.pixelSize: Theme.captionSize
        font.weight: Font.DemiBold
        color: Theme.secondaryText
        Layout.topMargin: 6
    }
    component Caption: Label {
        Layout.fillWidth: true
        wrapMode: Text.WordWrap
        font.pixelSize: Theme.captionSize
        color: Theme.tertiaryText
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 8
        RowLayout {
            Layout.fillWidth: true
            Label { text: editor.rules.editorTitle; font.pixelSize: Theme.titleSize - 4; font.bold: true; color: Theme.text; Layout.fillWidth: true }
            TabBar {
                currentIndex: editor.rules.inputMode === "build" ? 1 : 0
                TabButton { text: "Describe"; width: 100; onClicked: editor.rules.inputMode = "describe" }
                TabButton { text: "Build"; width: 100; onClicked: editor.startBuilding() }
            }
        }

        ScrollView {
            id: scroller
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            contentWidth: availableWidth
            ColumnLayout {
                width: scroller.availableWidth - 12
                spacing: 8

                // ---- describe ----
                ColumnLayout {
                    visible: editor.rules.inputMode === "describe"
                    Layout.fillWidth: true
                    spacing: 6
                    Heading { text: "SAY WHICH FILES AND WHERE THEY GO" }
                    TextArea {
                        id: phrase
                        Layout.fillWidth: true
                        Layout.minimumHeight: 56
                        wrapMode: TextEdit.Wrap
                        placeholderText: "move PDFs older than 2 weeks to Documents"
                        onTextChanged: if (text !== editor.rules.draftPhrase) editor.rules.draftPhrase = text
                        Accessible.name: "Rule sentence"
                    }
                    Caption { text: "Write it the way you'd say it. Nothing moves until you run the rule." }
                    RowLayout {
                        visible: editor.rules.editorLineCount > 1
                        Label {
                            text: "Each line is its own rule. You\u2019re editing line " + (editor.rules.editorLineIndex + 1)
                            color: Theme.secondaryText
                        }
                        SpinBox {
                            from: 1
                            to: Math.max(1, editor.rules.editorLineCount)
                            value: editor.rules.editorLineIndex + 1
                            onValueModified: editor.rules.editorLineIndex = value - 1
                        }
                    }
                    Label { visible: phrase.text === ""; text: "Try one of these"; color: Theme.secondaryText; font.pixelSize: Theme.captionSize }
                    Flow {
                        visible: phrase.text === ""
                        Layout.fillWidth: true
                        spacing: 6
                        Repeater {
                            model: ["move PDFs older than 2 weeks to Documents", "trash dmg, pkg and iso files older than 7 days", "zip screenshots every week"]
                            delegate: Button {
                                required property string modelData
                                text: modelData
                                flat: true
                                onClicked: phrase.text = modelData
                            }
                        }
                    }
                }

                // ---- build ----
                ColumnLayout {
                    visible: editor.rules.inputMode === "build"
                    Layout.fillWidth: true
                    spacing: 6
                    Heading { text: "PICK THE CONDITIONS" }
                    Caption { text: "Stack conditions one row at a time. Nothing moves until you run the rule." }
                    CheckBox { id: matchAny; text: "Any condition is enough (age and size still apply)"; onToggled: editor.pushRows() }
                    Repeater {
                        model: rows
                        delegate: RowLayout {
                            id: conditionRow
                            required property int index
                            required property string field
                            required property string op
                            required property string text
                            required property string place
                            readonly property var ops: ({ name: ["beginsWith", "contains", "endsWith", "equals"], size: ["biggerThan"], age: ["olderThan"], downloadSource: ["contains"] })[field] || ["is"]
                            Layout.fillWidth: true
                            ComboBox {
                                model: ["name", "fileExtension", "kind", "size", "age", "downloadSource", "location"]
                                displayText: ({ name: "Name", fileExtension: "Extension", kind: "Kind", size: "Size (MB)", age: "Age (days)", downloadSource: "Downloaded from", location: "Place" })[conditionRow.field]
                                currentIndex: model.indexOf(conditionRow.field)
                                onActivated: {
                                    const f = model[currentIndex]
                                    const first = ({ name: "contains", size: "biggerThan", age: "olderThan", downloadSource: "contains" })[f] || "is"
                                    rows.set(conditionRow.index, { field: f, op: first })
                                    editor.pushRows()
                                }
                            }
                            ComboBox {
                                model: conditionRow.ops
                                displayText: ({ beginsWith: "begins with", contains: "contains", endsWith: "ends with", equals: "equals", is: "is", biggerThan: "bigger than", olderThan: "older than" })[conditionRow.op]
                                currentIndex: Math.max(0, conditionRow.ops.indexOf(conditionRow.op))
                                onActivated: { rows.setProperty(conditionRow.index, "op", model[currentIndex]); editor.pushRows() }
                            }
                            TextField {
                                visible: conditionRow.field !== "location"
                                Layout.fillWidth: true
                                text: conditionRow.text
                                onTextEdited: { rows.setProperty(conditionRow.index, "text", text); editor.pushRows() }
                            }
                            ComboBox {
                                visible: conditionRow.field === "location"
                                Layout.fillWidth: true
                                model: ["downloads", "desktop"]
                                displayText: conditionRow.place === "desktop" ? "Desktop" : "Downloads"
                                currentIndex: model.indexOf(conditionRow.place)
                                onActivated: { rows.setProperty(conditionRow.index, "place", model[currentIndex]); editor.pushRows() }
                            }
                            Button { text: "Remove condition"; onClicked: { rows.remove(conditionRow.index); editor.pushRows() } }
                        }
                    }
                    Button {
                        text: "Add condition"
                        onClicked: rows.append({ field: "name", op: "contains", text: "", place: "downloads" })
                    }
                }

                // ---- how it's understood ----
                Heading { text: "HOW IT\u2019S UNDERSTOOD" }
                Label {
                    visible: editor.hasDraft
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    color: Theme.text
                    text: editor.hasDraft ? editor.draft.interpretation : ""
                }
                Flow {
                    visible: editor.hasDraft
                    Layout.fillWidth: true
                    spacing: 6
                    Repeater {
                        model: editor.hasDraft ? editor.draft.chips : []
                        delegate: Button {
                            required property var modelData
                            objectName: "chip-" + modelData.id
                            text: modelData.id === "action" ? modelData.text : modelData.text + "  \u00D7"
                            onClicked: editor.rules.removeChip(modelData.id)
                            ToolTip.visible: hovered
                            ToolTip.text: "Remove this part"
                            background: Rectangle { radius: 12; color: Theme.accentSoft; border.color: Theme.accent }
                        }
                    }
                }
                Caption { visible: editor.hasDraft; text: "Click a chip to drop that part." }
                ColumnLayout {
                    visible: editor.rules.draftUnrecognized.length > 0
                    spacing: 2
                    Label { text: "These words weren\u2019t used."; color: Theme.warning; font.pixelSize: Theme.captionSize }
                    Label {
                        text: editor.rules.draftUnrecognized.map(w => "\u201C" + w.text + "\u201D").join("  ")
                        color: Theme.text
                    }
                }
                Label {
                    visible: editor.rules.draftError !== ""
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    color: Theme.danger
                    text: editor.rules.draftError
                }

                // ---- what happens ----
                Heading { visible: editor.hasDraft; text: "WHAT HAPPENS" }
                RowLayout {
                    visible: editor.hasDraft
                    ComboBox {
                        model: ["move", "trash", "archive", "rename"]
                        displayText: ({ move: "Move to a folder", trash: "Move to Trash", archive: "Zip, keep the original", rename: "Rename" })[editor.draft.action] || ""
                        currentIndex: Math.max(0, model.indexOf(editor.draft.action))
                        onActivated: editor.rules.setDraftAction(model[currentIndex])
                        implicitWidth: 200
                    }
                    Button { visible: editor.draft.action === "move"; text: "Choose Folder…"; onClicked: folderChooser.open() }
                    Label {
                        visible: editor.draft.action === "move"
                        text: editor.rules.draftDestination !== "" ? editor.rules.draftDestination : "No folder chosen yet"
                        color: Theme.secondaryText
                        elide: Text.ElideMiddle
                        Layout.fillWidth: true
                    }
                    TextField {
                        visible: editor.draft.action === "rename"
                        text: editor.draft.pattern || ""
                        placeholderText: "{date}-{name}"
                        onEditingFinished: editor.rules.setDraftAction("rename", text)
                        Layout.fillWidth: true
                    }
                }
                ComboBox {
                    visible: editor.hasDraft
                    implicitWidth: 200
                    model: ["whenAdded", "manual", "hourly", "daily", "weekly"]
                    displayText: ({ whenAdded: "When a file arrives", manual: "When you run it", hourly: "Hourly", daily: "Daily", weekly: "Weekly", off: "Off" })[editor.draft.trigger] || ""
                    currentIndex: Math.max(0, model.indexOf(editor.draft.trigger))
                    onActivated: editor.rules.setDraftTrigger(model[currentIndex])
                }
                Repeater {
                    model: editor.hasDraft ? editor.draft.notes : []
                    delegate: Caption { required property string modelData; text: modelData }
                }

                // ---- what it would touch ----
                Heading { text: "WHAT THIS WOULD TOUCH RIGHT NOW" }
                ColumnLayout {
                    visible: !editor.auto.downloadsReadable
                    Label { text: "Allow Downloads to see what this rule would touch."; color: Theme.text }
                    Button { text: "Allow Downloads"; onClicked: downloadsChooser.open() }
                    Caption { text: "Read-only until you run a rule." }
                }
                ColumnLayout {
                    visible: editor.auto.downloadsReadable
                    Layout.fillWidth: true
                    spacing: 2
                    Label {
                        visible: !editor.hasDraft || !editor.draft.namesFiles
                        text: "Matching files appear here as you type."
                        color: Theme.secondaryText
                    }
                    Caption { visible: !editor.hasDraft || !editor.draft.namesFiles; text: "Name an extension, a kind, or part of a name to see the list." }
                    Label {
                        visible: editor.hasDraft && editor.draft.namesFiles && editor.auto.touchCount === 0
                        Layout.fillWidth: true
                        wrapMode: Text.WordWrap
                        color: Theme.secondaryText
                        text: "Nothing in " + (editor.draft.place || "Downloads") + " matches yet. Files that arrive later and match will be sorted."
                    }
                    Caption {
                        visible: editor.hasDraft && editor.draft.isArrival && editor.auto.touchCount > 0
                        text: "These are already here. \u201CWhen a file arrives\u201D only acts on new files; run the rule once from the list to tidy these."
                    }
                    Repeater {
                        model: editor.hasDraft && editor.draft.namesFiles ? editor.auto.touchRows : []
                        delegate: RowLayout {
                            id: touchRow
                            required property var modelData
                            Layout.fillWidth: true
                            Label { text: touchRow.modelData.name; color: Theme.text; elide: Text.ElideMiddle; Layout.fillWidth: true }
                            Label { text: touchRow.modelData.detail; color: Theme.tertiaryText; font.pixelSize: Theme.captionSize }
                        }
                    }
                    Caption {
                        visible: editor.hasDraft && editor.draft.namesFiles && editor.auto.touchCount > 50
                        text: "Showing the first 50 of " + editor.auto.touchCount
                    }
                }
            }
        }

        RowLayout {
            Layout.fillWidth: true
            Button { text: "Cancel"; onClicked: editor.close() }
            Item { Layout.fillWidth: true }
            Button {
                text: "Preview"
                enabled: editor.hasDraft
                onClicked: { editor.auto.previewDraft(); editor.previewRequested() }
            }
            Button {
                text: "Save rule"
                highlighted: true
                onClicked: editor.save()
                ToolTip.visible: hovered
                ToolTip.text: "Save rule (Ctrl+Return)"
            }
        }
    }
}
