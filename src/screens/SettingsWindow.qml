import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// The settings: a window of its own, so it opens while the main window is closed (the tray's
// "Settings" opens it), with one tab per pane. Escape closes it; Ctrl+Tab and Ctrl+Shift+Tab,
// or Tab onto the tab bar and the arrow keys, move between the panes.
Window {
    id: settingsWindow
    objectName: "settingsWindow"
    title: "Settings"
    // Never tied to the main window, whichever object owns it: it stands alone, and stays
    // up while that one is hidden.
    Component.onCompleted: transientParent = null
    width: 640
    height: 620
    minimumWidth: 520
    minimumHeight: 420
    color: Theme.window

    Shortcut { sequences: ["Ctrl+Tab", "Ctrl+PgDown"]; onActivated: tabs.currentIndex = (tabs.currentIndex + 1) % tabs.count }
    Shortcut {
        sequences: ["Ctrl+Shift+Tab", "Ctrl+PgUp"]
        onActivated: tabs.currentIndex = (tabs.currentIndex + tabs.count - 1) % tabs.count
    }

    // Escape closes the window once nothing inside wants it (an open list takes it first).
    FocusScope {
        anchors.fill: parent
        focus: true
        Keys.onEscapePressed: settingsWindow.close()
        ColumnLayout {
            anchors.fill: parent
            spacing: 0
            TabBar {
                id: tabs
                objectName: "settingsTabs"
                Layout.fillWidth: true
                Keys.onLeftPressed: decrementCurrentIndex()
                Keys.onRightPressed: incrementCurrentIndex()
                Repeater {
                    model: ["General", "Alerts", "Privacy", "About"]
                    TabButton {
                        required property string modelData
                        text: modelData
                        focusPolicy: Qt.StrongFocus
                    }
                }
            }
            StackLayout {
                Layout.fillWidth: true
                Layout.fillHeight: true
                currentIndex: tabs.currentIndex
                SettingsGeneralPane { shown: settingsWindow.visible && tabs.currentIndex === 0 }
                SettingsAlertsPane {}
                SettingsPrivacyPane {}
                SettingsAboutPane {}
            }
        }
    }
}
