import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brimvale.Core

// The update controls of the About pane: the automatic-check setting, a check now, and what
// the last check said (or why there are no checks at all).
ColumnLayout {
    id: section
    readonly property Updater updater: AppModel.updater
    spacing: 8
    Layout.fillWidth: true

    Switch {
        objectName: "automaticUpdatesSwitch"
        text: "Check for updates automatically"
        enabled: section.updater.configured
        checked: section.updater.automaticallyChecksForUpdates
        onToggled: section.updater.automaticallyChecksForUpdates = checked
    }
    RowLayout {
        spacing: 12
        Layout.fillWidth: true
        Button {
            objectName: "checkForUpdatesButton"
            text: "Check for Updates…"
            enabled: section.updater.canCheckForUpdates
            onClicked: section.updater.checkForUpdates()
        }
        Text {
            objectName: "updateStatusText"
            text: section.updater.statusText
            wrapMode: Text.WordWrap
            font.pixelSize: Theme.bodySize
            color: Theme.secondaryText
            Layout.fillWidth: true
        }
    }
}
