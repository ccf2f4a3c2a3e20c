import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brimvale
import Brimvale.Core

// General: the schedule new Autopilot rules start with, old project files (permanent delete
// only by a full hold; back to the Trash in one click), the tray icon, starting at login and
// sounds. The login item's state is read again whenever the pane comes into view.
SettingsPane {
    id: pane
    property bool shown: false
    readonly property var settings: AppModel.settings
    readonly property var scheduleNames: ["off", "hourly", "daily", "weekly"]
    property string loginStatus: "enabled"

    function refreshLoginStatus() { loginStatus = settings.loginItemStatus() }
    onShownChanged: if (shown) refreshLoginStatus()

    Card {
        title: "Autopilot"
        RowLayout {
            Layout.fillWidth: true
            Label { text: "Schedule for new rules"; Layout.fillWidth: true; color: Theme.text }
            ComboBox {
                objectName: "scheduleChoice"
                Accessible.name: "Schedule for new rules"
                model: ["Off", "Hourly", "Daily", "Weekly"]
                currentIndex: pane.scheduleNames.indexOf(pane.settings.defaultFolderSchedule)
                onActivated: (index) => pane.settings.defaultFolderSchedule = pane.scheduleNames[index]
            }
        }
        SettingsNote {
            text: "Each saved Autopilot rule keeps the schedule it was saved with, so changing this never turns an " +
                  "existing rule on. Runs are limited to what the saved preview matched, and every run is written to History."
        }
    }

    Card {
        title: "Old project files"
        RowLayout {
            Label { text: "Projects untouched for "; color: Theme.text }
            SettingsFigure {
                objectName: "untouchedDays"
                Accessible.name: "Days a project must be untouched"
                current: pane.settings.nodeModulesUntouchedDays
                onCommitted: (days) => pane.settings.nodeModulesUntouchedDays = days
            }
            Label { text: "days"; color: Theme.text }
        }
        RowLayout {
            Layout.fillWidth: true
            spacing: 10
            Label { text: "Delete old project files permanently"; Layout.fillWidth: true; color: Theme.text }
            HoldToConfirmButton {
                id: permanentHold
                objectName: "permanentHold"
                visible: !pane.settings.nodeModulesPermanent
                prominent: false
                title: "Hold to delete permanently"
                confirmedTitle: "Permanent delete on"
                onAction: pane.settings.nodeModulesPermanent = true
                onVisibleChanged: if (visible) permanentHold.reset() // a fresh hold each time it is offered
            }
            Label {
                visible: pane.settings.nodeModulesPermanent
                text: "Permanent delete on"
                font.bold: true
                color: Theme.danger
            }
            Button {
                objectName: "keepTrash"
                visible: pane.settings.nodeModulesPermanent
                text: "Keep Using the Trash"
                onClicked: pane.settings.nodeModulesPermanent = false
            }
        }
        SettingsNote {
            visible: !pane.settings.nodeModulesPermanent
            text: "Hold to turn permanent delete on. Releasing early leaves the Trash in place."
        }
        SettingsNote {
            text: "The default is the Trash. Permanent delete frees the space immediately and cannot be undone. " +
                  "App and tool files always go to the Trash."
        }
    }

    Card {
        title: PlatformText.worded("Menu bar and sound")
        SettingsSwitch {
            text: "Show free space next to the icon"
            checked: pane.settings.menuBarShowsFreeSpace
            onToggled: (on) => pane.settings.menuBarShowsFreeSpace = on
        }
        SettingsSwitch {
            text: "Launch at login"
            checked: pane.settings.launchAtLogin
            onToggled: (on) => { pane.settings.launchAtLogin = on; pane.refreshLoginStatus() }
        }
        SettingsNote {
            visible: pane.loginStatus === "requiresApproval"
            text: PlatformText.worded("Waiting for approval in System Settings \u203a Login Items.")
        }
        Button {
            visible: pane.loginStatus === "requiresApproval"
            text: PlatformText.worded("Open Login Items")
            onClicked: Qt.openUrlExternally(PlatformText.loginItemsFolder)
        }
        SettingsNote {
            visible: pane.loginStatus === "off" && pane.settings.launchAtLogin
            color: Theme.warning
            text: PlatformText.worded("Login item is off in System Settings. Turn the switch off and on again to re-register it.")
        }
        SettingsSwitch {
            text: "Play sounds"
            checked: pane.settings.playSounds
            onToggled: (on) => pane.settings.playSounds = on
        }
        SettingsNote {
            text: "Short cues for cleanup, previews, and errors. They follow the system setting for interface sound " +
                  "effects, and every cue also has a visible change."
        }
    }
}
