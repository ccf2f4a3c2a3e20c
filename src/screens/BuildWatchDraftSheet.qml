import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brimvale.Core

// The add-a-project sheet: the folder, what the scan found in it (or why it can't be
// watched), and the watch's settings. Nothing is watched until "Watch Project".
Popup {
    id: sheet
    objectName: "buildWatchDraftSheet"
    readonly property var watch: AppModel.buildWatch
    readonly property var draft: watch.draft
    readonly property var cadences: ["twiceDaily", "daily", "weekly"]

    modal: true
    closePolicy: Popup.NoAutoClose
    anchors.centerIn: Overlay.overlay
    width: Math.min(560, (parent ? parent.width : 560) - 80)
    padding: 20
    visible: watch.hasDraft
    background: Rectangle { color: Theme.card; radius: Theme.radius; border.color: Theme.border }

    ColumnLayout {
        anchors.fill: parent
        spacing: 10

        Label { text: "Watch " + (sheet.draft.name || ""); font.pixelSize: Theme.titleSize - 4; font.bold: true; color: Theme.text }
        Label { text: sheet.draft.path || ""; color: Theme.secondaryText; elide: Text.ElideMiddle; Layout.fillWidth: true }
        Label {
            visible: (sheet.draft.fromLinkNote || "") !== ""
            text: sheet.draft.fromLinkNote || ""
            color: Theme.accent
            wrapMode: Text.WordWrap
            Layout.fillWidth: true
        }

        RowLayout {
            visible: sheet.draft.scanning === true
            BusyIndicator { running: parent.visible; implicitWidth: 24; implicitHeight: 24 }
            Label { text: "Measuring the project\u2019s build files\u2026"; color: Theme.secondaryText }
        }
        Label {
            visible: (sheet.draft.problem || "") !== ""
            text: sheet.draft.problem || ""
            color: Theme.danger
            wrapMode: Text.WordWrap
            Layout.fillWidth: true
        }
        ColumnLayout {
            visible: sheet.draft.canConfirm === true
            Layout.fillWidth: true
            spacing: 2
            Label { text: sheet.draft.stacks + " · build files now " + sheet.draft.sizeText; color: Theme.text; font.bold: true }
            Repeater {
                model: sheet.draft.targets || []
                delegate: Label {
                    required property var modelData
                    text: modelData.title + " · " + modelData.bytesText
                    color: Theme.secondaryText
                    font.pixelSize: Theme.captionSize
                }
            }
        }

        RowLayout {
            Label { text: "Limit"; color: Theme.secondaryText }
            Button { text: "\u2212"; implicitWidth: 32; onClicked: sheet.watch.setDraftField("limitStep", -1); Accessible.name: "Lower the limit" }
            Label { text: sheet.draft.limitText || ""; color: Theme.text; font.bold: true }
            Button { text: "+"; implicitWidth: 32; onClicked: sheet.watch.setDraftField("limitStep", 1); Accessible.name: "Raise the limit" }
            Label { text: "Check"; color: Theme.secondaryText; Layout.leftMargin: 12 }
            ComboBox {
                model: ["Twice a day", "Once a day", "Once a week"]
                currentIndex: sheet.cadences.indexOf(sheet.draft.cadence)
                onActivated: index => sheet.watch.setDraftField("cadence", sheet.cadences[index])
            }
        }
        CheckBox {
            text: "Clean automatically when over the limit"
            checked: sheet.draft.autoClean === true
            onToggled: sheet.watch.setDraftField("autoClean", checked)
        }
        CheckBox {
            text: "Remove build files for good instead of moving them to the Trash"
            checked: sheet.draft.removesPermanently === true
            onToggled: sheet.watch.setDraftField("removesPermanently", checked)
        }
        RowLayout {
            visible: sheet.draft.showsOpenAtLogin === true
            CheckBox {
                text: "Open at login"
                checked: sheet.draft.openAtLogin === true
                onToggled: sheet.watch.setDraftField("openAtLogin", checked)
            }
            Label { text: sheet.draft.runsWhileOpen || ""; color: Theme.tertiaryText; font.pixelSize: Theme.captionSize }
        }

        RowLayout {
            Layout.fillWidth: true
            Item { Layout.fillWidth: true }
            Button { text: "Cancel"; onClicked: sheet.watch.cancelDraft() }
            Button {
                text: "Watch Project"
                highlighted: true
                enabled: sheet.draft.canConfirm === true
                onClicked: sheet.watch.confirmDraft()
            }
        }
    }
}
