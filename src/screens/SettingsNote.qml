import QtQuick
import QtQuick.Layouts

// The small explanatory line under a setting.
Text {
    Layout.fillWidth: true
    wrapMode: Text.WordWrap
    font.pixelSize: Theme.captionSize
    color: Theme.secondaryText
}
