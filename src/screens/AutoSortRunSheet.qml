import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brimvale
import Brimvale.Core

// The run preview: what the rules would do now, one tick per file, the explanation of what
// a run frees, the confirmation, and the run's result. Closing it drops the preview.
Popup {
    id: sheet
    readonly property var auto: AppModel.autoSort

    objectName: "autoSortRunSheet"
    modal: true
    closePolicy: Popup.CloseOnEscape
    anchors.centerIn: Overlay.overlay
    width: Math.min(660, (parent ? parent.width : 660) - 80)
    height: Math.min(620, (parent ? parent.height : 620) - 60)
    padding: 20
    background: Rectangle { color: Theme.card; radius: Theme.radius; border.color: Theme.border }
    onClosed: sheet.auto.clearPreview()

    component Heading: Label {
        font.pixelSize: Theme.captionSize
        font.weight: Font.DemiBold
        color: Theme.secondaryText
        Layout.topMargin: 4
    }

    Dialog {
        id: confirm
        objectName: "autoSortConfirm"
        title: sheet.auto.confirmQuestion
        modal: true
        anchors.centerIn: parent
        standardButtons: Dialog.Cancel | Dialog.Ok
        Label {
            width: 360
            wrapMode: Text.WordWrap
            color: Theme.secondaryText
            text: "Each file is checked again just before it moves. Anything that changed is left alone."
        }
        onAccepted: sheet.auto.runPreview()
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 10

        Label {
            text: "Run preview"
            font.pixelSize: Theme.titleSize - 4
            font.bold: true
            color: Theme.text
        }
        Label {
            visible: !sheet.auto.hasSimulation && !sheet.auto.isPreviewing
            text: "Nothing to preview yet. Pick a rule and choose Run now."
            color: Theme.secondaryText
        }
        ColumnLayout {
            visible: sheet.auto.isPreviewing || sheet.auto.isRunningRules
            spacing: 4
            BusyIndicator { running: parent.visible; implicitWidth: 32; implicitHeight: 32 }
            Label { text: "Checking the files…"; color: Theme.text; font.pixelSize: Theme.bodySize }
            Label { text: "Checking that each file is still there and still matches."; color: Theme.secondaryText; font.pixelSize: Theme.captionSize }
        }

        ColumnLayout {
            visible: sheet.auto.hasSimulation && !sheet.auto.isPreviewing
            Layout.fillWidth: true
            Layout.fillHeight: true
            spacing: 8

            Heading { text: "BEFORE ANYTHING MOVES" }
            Label {
                Layout.fillWidth: true
                wrapMode: Text.WordWrap
                color: Theme.text
                text: sheet.auto.previewFootnote
            }
            Repeater {
                model: sheet.auto.previewWarnings
                delegate: Label {
                    required property string modelData
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    color: Theme.warning
                    text: modelData
                }
            }
            Label {
                visible: sheet.auto.emptyPreviewText !== ""
                Layout.fillWidth: true
                wrapMode: Text.WordWrap
                color: Theme.secondaryText
                text: sheet.auto.emptyPreviewText
            }
            Heading { visible: sheet.auto.previewActions.length > 0; text: "UNTICK ANYTHING YOU WANT LEFT ALONE" }
            ScrollView {
                Layout.fillWidth: true
                Layout.fillHeight: true
                clip: true
                ColumnLayout {
                    width: sheet.availableWidth - 16
                    spacing: 2
                    Repeater {
                        model: sheet.auto.previewActions
                        delegate: RowLayout {
                            id: step
                            required property var modelData
                            Layout.fillWidth: true
                            CheckBox {
                                checked: step.modelData.ticked
                                enabled: !sheet.auto.isRunningRules && sheet.auto.ruleRunSuccess === ""
                                onToggled: sheet.auto.setActionTicked(step.modelData.id, checked)
                            }
                            ColumnLayout {
                                spacing: 0
                                Layout.fillWidth: true
                                Label { text: step.modelData.summary; color: Theme.text; elide: Text.ElideMiddle; Layout.fillWidth: true }
                                Label { text: step.modelData.detail; color: Theme.tertiaryText; font.pixelSize: Theme.captionSize }
                            }
                        }
                    }
                }
            }
        }

        ColumnLayout {
            visible: sheet.auto.ruleRunSuccess !== "" || sheet.auto.ruleRunErrors.length > 0
            Layout.fillWidth: true
            spacing: 2
            Label {
                visible: sheet.auto.ruleRunSuccess !== ""
                text: sheet.auto.ruleRunSuccess + " It\u2019s in History."
                color: Theme.positive
                font.weight: Font.DemiBold
            }
            Repeater {
                model: sheet.auto.ruleRunErrors
                delegate: Label {
                    required property string modelData
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    color: Theme.danger
                    font.pixelSize: Theme.captionSize
                    text: modelData
                }
            }
        }

        RowLayout {
            Layout.fillWidth: true
            Item { Layout.fillWidth: true }
            Button { text: sheet.auto.ruleRunSuccess !== "" ? "Done" : "Cancel"; onClicked: sheet.close() }
            Button {
                text: "Run now"
                highlighted: true
                enabled: sheet.auto.canRun
                onClicked: confirm.open()
            }
        }
    }
}
