import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brimvale

// Privacy: what stays on this computer and what goes out. There is no access to ask for here
// (file permissions decide what can be read), so the pane has no access section.
SettingsPane {
    id: pane
    Card {
        title: "What the app does with your data"
        Repeater {
            model: [
                "Your files and scan results stay on this Mac. There is no analytics and no account.",
                "Crash and hang reports are saved on this Mac. They are sent only if you choose Send diagnostics\u2026 " +
                    "and send the email it drafts.",
                "Rules, history, and settings are JSON files in ~/Library/Application Support/Brimvale.",
                "The only thing the app asks of the network is whether an update is out. Nothing about your files " +
                    "or your disk goes with it."
            ]
            RowLayout {
                id: line
                required property string modelData
                Layout.fillWidth: true
                spacing: 8
                Label { text: "\u2022"; Layout.alignment: Qt.AlignTop; color: Theme.secondaryText }
                Label {
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    text: PlatformText.worded(line.modelData)
                    color: Theme.text
                }
            }
        }
        SendDiagnosticsButton {}
    }
}
