import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brimvale
import Brimvale.Core

// Alerts: the low-space alert, its limit in gigabytes or percent of the disk, and how often it
// speaks. With "Alert when below either" both figures count, so both are shown.
SettingsPane {
    id: pane
    readonly property var settings: AppModel.settings
    readonly property bool inGigabytes: settings.lowSpaceUnit === "gigabytes"

    Card {
        title: "Low disk space"
        SettingsSwitch {
            text: "Alert me when free space runs low"
            checked: pane.settings.alertsEnabled
            onToggled: (on) => pane.settings.alertsEnabled = on
        }
        ColumnLayout {
            Layout.fillWidth: true
            enabled: pane.settings.alertsEnabled
            spacing: 8
            RowLayout {
                Layout.fillWidth: true
                spacing: 8
                Label { text: "Threshold"; Layout.fillWidth: true; color: Theme.text }
                ComboBox {
                    objectName: "unitChoice"
                    Accessible.name: "Threshold unit"
                    model: ["Gigabytes free", "Percent free"]
                    implicitContentWidthPolicy: ComboBox.WidestText
                    currentIndex: pane.inGigabytes ? 0 : 1
                    onActivated: (index) => pane.settings.lowSpaceUnit = index === 0 ? "gigabytes" : "percent"
                }
                SettingsFigure {
                    objectName: "gigabytesFigure"
                    Accessible.name: "Threshold in gigabytes"
                    visible: pane.inGigabytes || pane.settings.alertWhenBelowEither
                    current: pane.settings.lowSpaceGigabytes
                    onCommitted: (figure) => pane.settings.lowSpaceGigabytes = figure
                }
                Label { visible: pane.inGigabytes || pane.settings.alertWhenBelowEither; text: "GB"; color: Theme.text }
                Label { visible: pane.settings.alertWhenBelowEither; text: "or"; color: Theme.secondaryText }
                SettingsFigure {
                    objectName: "percentFigure"
                    Accessible.name: "Threshold in percent"
                    visible: !pane.inGigabytes || pane.settings.alertWhenBelowEither
                    current: pane.settings.lowSpacePercent
                    onCommitted: (figure) => pane.settings.lowSpacePercent = figure
                }
                Label { visible: !pane.inGigabytes || pane.settings.alertWhenBelowEither; text: "%"; color: Theme.text }
            }
            CheckBox {
                text: "Alert when below either"
                checked: pane.settings.alertWhenBelowEither
                onToggled: pane.settings.alertWhenBelowEither = checked
            }
            CheckBox {
                text: "Remind once a day while still low"
                checked: pane.settings.lowSpaceRemindDaily
                onToggled: pane.settings.lowSpaceRemindDaily = checked
            }
        }
        SettingsNote {
            text: PlatformText.worded("Brimvale checks on its usual refresh and when the Mac wakes. It notifies once when " +
                  "free space crosses below the limit, and again only after space rises above that limit plus a small " +
                  "margin. Autopilot and Auto-Sort post a quiet note when they run or skip something.")
        }
    }
}
