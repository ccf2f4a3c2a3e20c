import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brimvale.Core

// The offer of a newer release that a check found: its version and notes, "Download" to
// open its page in the browser and "Later" to put the offer away. It opens by itself each
// time a check brings an offer. A check started from the menu (checkFromMenu) that brings
// none opens it too, with what the check found, since the menu has no status line.
Dialog {
    id: alert
    readonly property Updater updater: AppModel.updater
    property bool offering: true
    property bool answerPending: false
    // Copied when the offer arrives: closing clears the updater's copy while the dialog fades.
    property string offeredVersion
    property string offeredNotes
    property url offeredUrl
    property string answer
    objectName: "updateAvailableDialog"
    title: offering ? "A new version of Brimvale is available" : "Check for Updates"
    modal: true
    anchors.centerIn: parent
    width: Math.min(480, (parent ? parent.width : 480) - 48)
    padding: 20
    closePolicy: Popup.CloseOnEscape

    function checkFromMenu() {
        alert.answerPending = true
        alert.updater.checkForUpdates()
    }

    Connections {
        target: alert.updater
        function onAvailableChanged() {
            if (alert.updater.availableVersion.length === 0) return
            alert.offering = true
            alert.offeredVersion = alert.updater.availableVersion
            alert.offeredNotes = alert.updater.availableNotes
            alert.offeredUrl = alert.updater.availableUrl
            alert.open()
        }
        function onCheckFinished() {
            const pending = alert.answerPending
            alert.answerPending = false
            if (!pending || alert.updater.availableVersion.length > 0) return
            alert.offering = false
            alert.answer = alert.updater.statusText
            alert.open()
        }
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 10
        Label {
            text: alert.offering ? "Brimvale " + alert.offeredVersion + " is available. You have an older version."
                                 : alert.answer
            wrapMode: Text.WordWrap
            Layout.fillWidth: true
        }
        ScrollView {
            visible: alert.offering && alert.offeredNotes.length > 0
            Layout.fillWidth: true
            Layout.preferredHeight: Math.min(notes.implicitHeight, 240)
            Label {
                id: notes
                width: alert.availableWidth
                text: alert.offeredNotes
                textFormat: Text.PlainText
                wrapMode: Text.WordWrap
                color: Theme.secondaryText
            }
        }
    }

    footer: RowLayout {
        spacing: 8
        Item { Layout.fillWidth: true }
        Button {
            text: "Later"
            visible: alert.offering
            Layout.bottomMargin: 16
            onClicked: alert.reject()
        }
        Button {
            text: alert.offering ? "Download" : "OK"
            highlighted: true
            Layout.rightMargin: 16
            Layout.bottomMargin: 16
            onClicked: alert.accept()
        }
    }
    onAccepted: if (alert.offering) Qt.openUrlExternally(alert.offeredUrl)
    // Either way an offer is done with; a later check brings it back.
    onClosed: if (alert.offering) alert.updater.dismissAvailable()
}
