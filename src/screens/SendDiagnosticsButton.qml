import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brimvale.Core

// "Send diagnostics…" and, beneath it, how many reports are saved. The count is read again
// whenever the button is shown.
ColumnLayout {
    spacing: 4
    Button {
        text: "Send diagnostics…"
        onClicked: AppModel.diagnostics.sendDiagnostics()
    }
    Text {
        text: AppModel.diagnostics.countText
        font.pixelSize: Theme.captionSize
        color: Theme.secondaryText
    }
    Component.onCompleted: AppModel.diagnostics.refreshCount()
}
