import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brimvale.Core

// The section list: three groups, each with a heading, rows with a title and a badge.
Rectangle {
    id: sidebarRoot
    property string selected: "overview"
    property var badges: ({})
    signal chosen(string name)
    color: Theme.sidebar
    implicitWidth: 232

    Flickable {
        anchors.fill: parent
        contentHeight: column.implicitHeight + 24
        clip: true
        ColumnLayout {
            id: column
            x: 12
            y: 16
            width: sidebarRoot.width - 24
            spacing: 2
            Text {
                text: "Brimvale"
                font.pixelSize: 18
                font.weight: Font.Bold
                color: Theme.text
                Layout.leftMargin: 8
                Layout.bottomMargin: 10
            }
            Repeater {
                model: AppModel.sidebarGroups
                delegate: ColumnLayout {
                    id: group
                    required property var modelData
                    // The rows below reach the sidebar through these, one level at a time.
                    readonly property string selectedName: sidebarRoot.selected
                    readonly property var badgeTexts: sidebarRoot.badges
                    function choose(name) { sidebarRoot.chosen(name) }
                    Layout.fillWidth: true
                    spacing: 2
                    Text {
                        text: group.modelData.title.toUpperCase()
                        font.pixelSize: Theme.captionSize
                        font.weight: Font.DemiBold
                        font.letterSpacing: 0.6
                        color: Theme.tertiaryText
                        Layout.leftMargin: 8
                        Layout.topMargin: 12
                        Layout.bottomMargin: 4
                    }
                    Repeater {
                        model: group.modelData.sections
                        delegate: Rectangle {
                            id: row
                            required property var modelData
                            readonly property bool isSelected: group.selectedName === row.modelData.name
                            Layout.fillWidth: true
                            implicitHeight: 34
                            radius: 7
                            color: isSelected ? Theme.selection : (hover.hovered ? "#e2e5eb" : "transparent")
                            Accessible.role: Accessible.ListItem
                            Accessible.name: row.modelData.title
                            HoverHandler { id: hover }
                            TapHandler { onTapped: group.choose(row.modelData.name) }
                            RowLayout {
                                anchors.fill: parent
                                anchors.leftMargin: 10
                                anchors.rightMargin: 10
                                spacing: 8
                                Text {
                                    text: row.modelData.title
                                    font.pixelSize: Theme.bodySize
                                    font.weight: row.isSelected ? Font.DemiBold : Font.Normal
                                    color: row.isSelected ? Theme.accent : Theme.text
                                    // The title keeps its whole width; the badge gives way.
                                    Layout.fillWidth: true
                                    Layout.minimumWidth: implicitWidth
                                }
                                Text {
                                    text: group.badgeTexts[row.modelData.name] || ""
                                    visible: text.length > 0
                                    font.pixelSize: Theme.captionSize
                                    color: Theme.secondaryText
                                    elide: Text.ElideRight
                                    Layout.maximumWidth: implicitWidth
                                    Layout.fillWidth: true
                                }
                                Text {
                                    text: "Ctrl+" + row.modelData.key
                                    font.pixelSize: 10
                                    color: Theme.tertiaryText
                                    visible: hover.hovered
                                }
                            }
                        }
                    }
                }
            }
        }
    }
}
