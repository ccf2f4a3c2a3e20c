import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import QtQuick.Layouts
import Brimvale.Core

// Build Watch: the watched projects with their size against the limit, growth this week, the
// latest note and their controls; the big unwatched projects the look found; and the way in
// for a new project (a folder chosen or dropped here), whose draft sheet the window holds.
Item {
    id: page
    property string title: "Build Watch"
    property string tagline: "Project builds kept in check."
    readonly property var watch: AppModel.buildWatch
    readonly property var cadences: ["twiceDaily", "daily", "weekly"]
    readonly property var cadenceLabels: ["Twice a day", "Once a day", "Once a week"]

    FolderDialog {
        id: chooser
        title: "Choose a project folder to watch."
        onAccepted: page.watch.startDraft(decodeURIComponent(String(selectedFolder).replace(/^file:\/\//, "")), false)
    }

    DropArea {
        anchors.fill: parent
        onDropped: drop => {
            if (drop.hasUrls && drop.urls.length > 0)
                page.watch.startDraft(decodeURIComponent(String(drop.urls[0]).replace(/^file:\/\//, "")), false)
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

            Rectangle {
                visible: page.watch.toast !== ""
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Layout.fillWidth: true
                implicitHeight: toastRow.implicitHeight + 16
                radius: Theme.radius
                color: Theme.accentSoft
                RowLayout {
                    id: toastRow
                    anchors.fill: parent
                    anchors.margins: 8
                    Label { text: page.watch.toast; wrapMode: Text.WordWrap; color: Theme.text; Layout.fillWidth: true }
                    Button { text: "OK"; flat: true; onClicked: page.watch.clearToast() }
                }
            }

            Card {
                title: "Watched projects"
                trailing: "Watches run only while Brimvale is open."
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Layout.fillWidth: true
                Label {
                    visible: page.watch.watches.length === 0
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    color: Theme.secondaryText
                    text: "Choose a project folder, such as one with Cargo.toml or package.json. Its build files are measured on a schedule and kept under the limit you set."
                }
                Repeater {
                    model: page.watch.watches
                    delegate: ColumnLayout {
                        id: row
                        required property var modelData
                        Layout.fillWidth: true
                        spacing: 4
                        RowLayout {
                            Layout.fillWidth: true
                            ColumnLayout {
                                Layout.fillWidth: true
                                spacing: 2
                                Label { text: row.modelData.name + (row.modelData.isEnabled ? "" : " (paused)"); font.bold: true; color: Theme.text }
                                Label { text: row.modelData.path + " · " + row.modelData.stacks; color: Theme.secondaryText; font.pixelSize: Theme.captionSize; elide: Text.ElideMiddle; Layout.fillWidth: true }
                            }
                            Label {
                                text: row.modelData.sizeText + " of " + row.modelData.limitText
                                color: row.modelData.overLimit ? Theme.danger : Theme.text
                                font.bold: true
                            }
                            Label { visible: row.modelData.growthText !== ""; text: row.modelData.growthText; color: Theme.secondaryText; font.pixelSize: Theme.captionSize }
                        }
                        ProgressBar { Layout.fillWidth: true; from: 0; to: 1; value: row.modelData.fraction }
                        Label {
                            visible: row.modelData.note !== ""
                            text: row.modelData.note
                            color: Theme.warning
                            wrapMode: Text.WordWrap
                            Layout.fillWidth: true
                            font.pixelSize: Theme.captionSize
                        }
                        Label { visible: row.modelData.freedText !== ""; text: row.modelData.freedText; color: Theme.positive; font.pixelSize: Theme.captionSize }
                        RowLayout {
                            Layout.fillWidth: true
                            Label { text: "Limit"; color: Theme.secondaryText }
                            Button { text: "\u2212"; implicitWidth: 32; onClicked: page.watch.stepLimit(row.modelData.id, -1); Accessible.name: "Lower the limit" }
                            Label { text: row.modelData.limitText; color: Theme.text }
                            Button { text: "+"; implicitWidth: 32; onClicked: page.watch.stepLimit(row.modelData.id, 1); Accessible.name: "Raise the limit" }
                            ComboBox {
                                model: page.cadenceLabels
                                currentIndex: page.cadences.indexOf(row.modelData.cadence)
                                onActivated: index => page.watch.setCadence(row.modelData.id, page.cadences[index])
                            }
                            CheckBox { text: "Clean automatically"; checked: row.modelData.autoClean; onToggled: page.watch.setAutoClean(row.modelData.id, checked) }
                            CheckBox { text: "Remove for good"; checked: row.modelData.removesPermanently; onToggled: page.watch.setRemovesPermanently(row.modelData.id, checked) }
                            Item { Layout.fillWidth: true }
                        }
                        RowLayout {
                            Button { text: "Measure now"; enabled: !row.modelData.busy; onClicked: page.watch.measureNow(row.modelData.id) }
                            Button { text: "Clean now"; enabled: !row.modelData.busy; onClicked: page.watch.cleanNow(row.modelData.id) }
                            Button { text: row.modelData.isEnabled ? "Pause" : "Resume"; onClicked: page.watch.setEnabled(row.modelData.id, !row.modelData.isEnabled) }
                            Button { text: "Stop watching"; onClicked: page.watch.stopWatching(row.modelData.id) }
                            BusyIndicator { visible: row.modelData.busy; running: visible; implicitWidth: 24; implicitHeight: 24 }
                        }
                        Rectangle { Layout.fillWidth: true; implicitHeight: 1; color: Theme.border }
                    }
                }
                RowLayout {
                    Button { text: "Watch a Project…"; highlighted: true; onClicked: chooser.open() }
                    Label { text: "Or drop a project folder here."; color: Theme.tertiaryText; font.pixelSize: Theme.captionSize; Layout.fillWidth: true }
                    CheckBox { text: "Open at login"; checked: page.watch.openAtLogin; onToggled: page.watch.openAtLogin = checked }
                }
            }

            Card {
                title: "Big projects not watched yet"
                trailing: page.watch.suggestionsScanning ? "Looking…" : ""
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Layout.fillWidth: true
                Label {
                    visible: page.watch.suggestions.length === 0
                    text: page.watch.suggestionsScanning ? "Looking through your source folders…"
                                                         : "No unwatched project holds 1 GB or more of build files."
                    color: Theme.secondaryText
                }
                Repeater {
                    model: page.watch.suggestions
                    delegate: RowLayout {
                        id: suggestion
                        required property var modelData
                        Layout.fillWidth: true
                        ColumnLayout {
                            Layout.fillWidth: true
                            spacing: 2
                            Label { text: suggestion.modelData.name + " · " + suggestion.modelData.bytesText; font.bold: true; color: Theme.text }
                            Label {
                                text: suggestion.modelData.pathText + " · " + suggestion.modelData.stacks
                                      + (suggestion.modelData.mostly !== "" ? " · mostly " + suggestion.modelData.mostly : "")
                                color: Theme.secondaryText
                                font.pixelSize: Theme.captionSize
                                elide: Text.ElideMiddle
                                Layout.fillWidth: true
                            }
                        }
                        Button { text: "Watch"; highlighted: true; onClicked: page.watch.watchSuggestion(suggestion.modelData.path) }
                        Button { text: "Dismiss"; onClicked: page.watch.dismissSuggestion(suggestion.modelData.path) }
                    }
                }
                Label { visible: page.watch.refusedNote !== ""; text: page.watch.refusedNote; color: Theme.tertiaryText; font.pixelSize: Theme.captionSize; wrapMode: Text.WordWrap; Layout.fillWidth: true }
                Button { text: "Look for projects"; enabled: !page.watch.suggestionsScanning; onClicked: page.watch.lookForProjects(true) }
            }
            Item { implicitHeight: 20 }
        }
    }

}
