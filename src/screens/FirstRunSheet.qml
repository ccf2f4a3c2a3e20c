import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brimvale
import Brimvale.Core

// The first run, once: welcome, access (only where an access layer exists), the first scan
// with the tour as its wait, the report, and the first clean with its confirmation.
Popup {
    id: sheet
    readonly property var g: AppModel.guidance
    readonly property string step: g.firstRunStep

    modal: true
    closePolicy: Popup.NoAutoClose
    anchors.centerIn: Overlay.overlay
    width: Math.min(620, (parent ? parent.width : 620) - 80)
    height: Math.min(560, (parent ? parent.height : 560) - 80)
    padding: 24
    visible: g.isOnboardingPresented
    background: Rectangle { color: Theme.card; radius: Theme.radius; border.color: Theme.border }

    StackLayout {
        anchors.fill: parent
        currentIndex: ({ welcome: 0, access: 1, scanning: 2, report: 3, firstClean: 4 })[sheet.step] ?? 0

        // Welcome.
        ColumnLayout {
            spacing: 14
            Item { Layout.fillHeight: true }
            Label { text: sheet.g.texts.welcomeTitle; font.pixelSize: Theme.titleSize; font.bold: true; color: Theme.text }
            Label {
                Layout.fillWidth: true
                wrapMode: Text.WordWrap
                color: Theme.secondaryText
                text: sheet.g.texts.welcomeText
            }
            Item { Layout.fillHeight: true }
            RowLayout {
                Item { Layout.fillWidth: true }
                Button { text: "Not now"; onClicked: sheet.g.closeFirstRun() }
                Button { objectName: "welcomeContinue"; text: "Continue"; highlighted: true; onClicked: sheet.g.continueFromWelcome() }
            }
        }

        // Access.
        ColumnLayout {
            spacing: 14
            Label { text: sheet.g.texts.accessTitle; font.pixelSize: Theme.titleSize - 4; font.bold: true; color: Theme.text }
            Label {
                Layout.fillWidth: true
                wrapMode: Text.WordWrap
                color: Theme.secondaryText
                text: sheet.g.texts.accessText
            }
            Label {
                text: sheet.g.fullDiskAccessGranted ? sheet.g.texts.accessOn : sheet.g.texts.accessOff
                color: sheet.g.fullDiskAccessGranted ? Theme.positive : Theme.warning
            }
            Item { Layout.fillHeight: true }
            RowLayout {
                Button { text: "Open System Settings"; onClicked: Qt.openUrlExternally(sheet.g.texts.privacyPaneUrl) }
                Item { Layout.fillWidth: true }
                Button { text: "Continue without it"; onClicked: sheet.g.continueWithoutAccess() }
                Button {
                    text: "Continue"
                    highlighted: true
                    enabled: sheet.g.fullDiskAccessGranted
                    onClicked: sheet.g.continueWithAccess()
                }
            }
        }

        // The scan, with the tour as its wait.
        ColumnLayout {
            spacing: 10
            RowLayout {
                Label { text: sheet.g.texts.scanTitle; font.pixelSize: Theme.titleSize - 4; font.bold: true; color: Theme.text }
                Item { Layout.fillWidth: true }
                BusyIndicator { running: sheet.g.firstRunScanning; visible: running; implicitWidth: 28; implicitHeight: 28 }
                Label { visible: sheet.g.firstRunScanning; text: sheet.g.texts.scanStatus; color: Theme.secondaryText }
            }
            Label {
                text: sheet.g.texts.scanNote
                color: Theme.tertiaryText
                font.pixelSize: Theme.captionSize
            }
            TourView { Layout.fillWidth: true; Layout.fillHeight: true }
            RowLayout {
                Item { Layout.fillWidth: true }
                Button { text: "Skip for now"; flat: true; onClicked: sheet.g.closeFirstRun() }
            }
        }

        // The report.
        ColumnLayout {
            spacing: 10
            Label { text: sheet.g.texts.reportTitle; font.pixelSize: Theme.titleSize - 4; font.bold: true; color: Theme.text }
            Repeater {
                model: sheet.g.firstRunTotals
                RowLayout {
                    id: totalLine
                    required property var modelData
                    Layout.fillWidth: true
                    Label { text: totalLine.modelData.title; color: Theme.text; Layout.fillWidth: true }
                    Label { text: totalLine.modelData.safety; color: Theme.tertiaryText; font.pixelSize: Theme.captionSize }
                    Label { text: totalLine.modelData.sizeText; color: Theme.text; font.bold: true }
                }
            }
            Label {
                objectName: "reportSummary"
                Layout.fillWidth: true
                wrapMode: Text.WordWrap
                text: sheet.g.firstRunSummary
                color: Theme.text
                font.pixelSize: Theme.headingSize
            }
            ColumnLayout {
                visible: !sheet.g.fullDiskAccessGranted
                Label {
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    color: Theme.secondaryText
                    text: sheet.g.texts.libraryMissing
                }
                Button { text: "Grant"; onClicked: Qt.openUrlExternally(sheet.g.texts.privacyPaneUrl) }
            }
            Item { Layout.fillHeight: true }
            RowLayout {
                Item { Layout.fillWidth: true }
                Button { text: "Not now"; onClicked: sheet.g.closeFirstRun() }
                Button {
                    objectName: "reportClean"
                    text: "Choose What to Clean"
                    highlighted: true
                    visible: sheet.g.firstRunItems.count > 0
                    onClicked: sheet.g.openFirstClean()
                }
            }
        }

        // The first clean: every item with a tick, then the confirmation; afterwards what went.
        ColumnLayout {
            spacing: 10
            Label {
                text: sheet.g.firstRunCleanDone ? "Done" : "Choose what to clean"
                font.pixelSize: Theme.titleSize - 4; font.bold: true; color: Theme.text
            }
            ScrollView {
                visible: !sheet.g.firstRunCleanDone
                Layout.fillWidth: true
                Layout.fillHeight: true
                clip: true
                ListView {
                    model: sheet.g.firstRunItems
                    section.property: "categoryTitle"
                    section.delegate: Label {
                        required property string section
                        text: section; font.bold: true; color: Theme.secondaryText; topPadding: 8
                    }
                    delegate: CheckDelegate {
                        required property string itemId
                        required property string title
                        required property string pathText
                        required property string sizeText
                        required property bool selected
                        width: ListView.view.width
                        text: title + "  \u00b7  " + sizeText
                        checked: selected
                        enabled: !AppModel.guidance.firstRunCleaning
                        onToggled: AppModel.guidance.setItemSelected(itemId, checked)
                        ToolTip.text: pathText
                        ToolTip.visible: hovered
                    }
                }
            }
            Label {
                visible: sheet.g.firstRunCleanDone
                Layout.fillWidth: true
                wrapMode: Text.WordWrap
                text: sheet.g.firstRunCleanSummary
                color: Theme.text
                font.pixelSize: Theme.headingSize
            }
            Label {
                objectName: "firstRunNote"
                visible: text.length > 0
                Layout.fillWidth: true
                wrapMode: Text.WordWrap
                text: sheet.g.firstRunNote
                color: Theme.danger
            }
            Item { visible: sheet.g.firstRunCleanDone; Layout.fillHeight: true }
            RowLayout {
                Button { text: "Back"; visible: !sheet.g.firstRunCleanDone; enabled: !sheet.g.firstRunCleaning; onClicked: sheet.g.backToReport() }
                Item { Layout.fillWidth: true }
                BusyIndicator { running: sheet.g.firstRunCleaning; visible: running; implicitWidth: 28; implicitHeight: 28 }
                Button {
                    objectName: "moveToTrash"
                    visible: !sheet.g.firstRunCleanDone
                    text: "Move to Trash\u2026"
                    highlighted: true
                    enabled: !sheet.g.firstRunCleaning
                    // With nothing ticked the model says "Choose what to clean." instead.
                    onClicked: sheet.g.firstRunSelectedCount > 0 ? confirm.open() : sheet.g.confirmFirstClean()
                }
                Button { objectName: "firstRunDone"; visible: sheet.g.firstRunCleanDone; text: "Done"; highlighted: true; onClicked: sheet.g.closeFirstRun() }
            }
        }
    }

    Dialog {
        id: confirm
        objectName: "firstCleanConfirm"
        title: sheet.g.texts.confirmTitle
        modal: true
        anchors.centerIn: parent
        Label { text: sheet.g.texts.confirmText; wrapMode: Text.WordWrap; width: 340 }
        footer: RowLayout {
            Item { Layout.fillWidth: true }
            Button { text: "Cancel"; onClicked: confirm.reject() }
            Button { objectName: "confirmMove"; text: "Move to Trash"; highlighted: true; onClicked: confirm.accept() }
        }
        onAccepted: sheet.g.confirmFirstClean()
    }
}
