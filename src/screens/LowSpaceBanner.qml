import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brimvale.Core

// The low-space banner at the top of the Overview: how much is left, a way into the clean-up
// preview, and two ways to quiet it. Folded it keeps one compact line that opens again.
// A warning can be hidden until free space drops further; a critical banner cannot.
Rectangle {
    id: banner
    readonly property bool critical: AppModel.lowSpace.severity === "critical"
    readonly property color tint: critical ? Theme.danger : Theme.warning
    readonly property bool folded: AppModel.lowSpace.bannerFolded

    visible: AppModel.lowSpace.showsBanner
    color: Qt.tint(Theme.card, Qt.rgba(tint.r, tint.g, tint.b, 0.12))
    radius: Theme.radius
    border.color: tint
    implicitHeight: visible ? (folded ? compact.implicitHeight : full.implicitHeight) + 24 : 0
    Layout.fillWidth: true

    Accessible.role: Accessible.AlertMessage
    Accessible.name: AppModel.lowSpace.bannerText

    // Folded: the line and a way back to the full banner.
    RowLayout {
        id: compact
        visible: banner.folded
        anchors.fill: parent
        anchors.margins: 12
        spacing: 10
        Rectangle {
            implicitWidth: 10
            implicitHeight: 10
            radius: 5
            color: banner.tint
        }
        Text {
            text: AppModel.lowSpace.bannerText
            font.pixelSize: Theme.bodySize
            font.weight: Font.DemiBold
            color: Theme.text
            elide: Text.ElideRight
            Layout.fillWidth: true
        }
        Button {
            text: "Show"
            flat: true
            onClicked: AppModel.lowSpace.setBannerFolded(false)
        }
    }

    ColumnLayout {
        id: full
        visible: !banner.folded
        anchors.fill: parent
        anchors.margins: 12
        spacing: 8
        RowLayout {
            Layout.fillWidth: true
            spacing: 10
            Rectangle {
                implicitWidth: 22
                implicitHeight: 22
                radius: 11
                color: banner.tint
                Text {
                    anchors.centerIn: parent
                    text: "!"
                    font.pixelSize: Theme.headingSize
                    font.weight: Font.Bold
                    color: Theme.card
                }
            }
            Text {
                text: AppModel.lowSpace.bannerText
                font.pixelSize: Theme.headingSize
                font.weight: Font.DemiBold
                color: Theme.text
                wrapMode: Text.Wrap
                Layout.fillWidth: true
            }
            Button {
                // A single "&" would mark a keyboard mnemonic; doubled it shows as itself.
                text: "Review && Clean"
                highlighted: true
                onClicked: AppModel.requestCleanupSheet()
            }
            Button {
                text: "Dismiss"
                onClicked: AppModel.lowSpace.foldBanner()
            }
        }
        // Only a warning can be hidden; at critical the banner stays until space comes back.
        Button {
            visible: !banner.critical
            text: "Hide this warning until free space drops further"
            flat: true
            font.pixelSize: Theme.captionSize
            onClicked: AppModel.lowSpace.hideNotice()
        }
    }
}
