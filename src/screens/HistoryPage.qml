import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brimvale.Core

// Everything that moved or removed a file, by day, with the week's total, the streak and a
// search over names, details and folders. Clearing it puts nothing back; an item still in the
// Trash comes back with "Put back" on its row.
Item {
    id: page
    property string title: "History"
    property string tagline: "Everything you got back"
    readonly property var log: AppModel.activityLog
    readonly property var putBack: AppModel.putBack

    Component.onCompleted: putBack.refresh()
    onVisibleChanged: if (visible) putBack.refresh()

    ColumnLayout {
        anchors.fill: parent
        anchors.leftMargin: 28
        anchors.rightMargin: 28
        spacing: Theme.spacing

        Item { implicitHeight: 0 }
        RowLayout {
            Layout.fillWidth: true
            SectionHeader { title: page.title; tagline: page.tagline; Layout.fillWidth: false }
            Item { Layout.fillWidth: true }
            Button {
                text: "Review && Clean"
                Layout.alignment: Qt.AlignTop
                onClicked: AppModel.requestCleanupSheet()
            }
        }

        RowLayout {
            Layout.fillWidth: true
            spacing: Theme.spacing

            Card {
                id: weekCard
                title: "This week"
                Layout.preferredWidth: 2
                RowLayout {
                    spacing: 18
                    ColumnLayout {
                        spacing: 2
                        Text {
                            text: page.log.weekTotalText
                            font.pixelSize: 26
                            font.weight: Font.Bold
                            color: page.log.weekBytes >= 1 ? Theme.positive : Theme.text
                        }
                        Text {
                            text: page.log.weekCaption
                            font.pixelSize: Theme.bodySize
                            color: Theme.secondaryText
                        }
                        Text {
                            visible: text.length > 0
                            text: page.log.lifetimeText
                            font.pixelSize: Theme.captionSize
                            color: Theme.tertiaryText
                            Layout.topMargin: 4
                        }
                    }
                    Item { Layout.fillWidth: true }
                    WeekChart { bars: page.log.weekBars }
                }
            }

            Card {
                title: "Streak"
                Layout.preferredWidth: 1
                Layout.preferredHeight: weekCard.implicitHeight
                Layout.alignment: Qt.AlignTop
                Text {
                    text: page.log.streakText
                    font.pixelSize: page.log.streak > 0 ? 26 : Theme.headingSize
                    font.weight: page.log.streak > 0 ? Font.Bold : Font.Normal
                    color: Theme.text
                    wrapMode: Text.WordWrap
                    Layout.fillWidth: true
                }
                Text {
                    visible: page.log.streak > 0
                    text: page.log.streakCaption
                    font.pixelSize: Theme.bodySize
                    color: Theme.secondaryText
                }
            }
        }

        RowLayout {
            Layout.fillWidth: true
            spacing: 10
            TextField {
                id: search
                Layout.fillWidth: true
                placeholderText: page.log.searchHint
                text: page.log.query
                onTextEdited: page.log.query = text
                selectByMouse: true
                Accessible.name: "Search History"
            }
            Button {
                text: page.log.clearButton
                enabled: !page.log.isEmpty
                onClicked: clearDialog.open()
            }
        }

        // What the last put-back did, or why it could not.
        Rectangle {
            Layout.fillWidth: true
            visible: page.putBack.message.length > 0
            implicitHeight: putBackLine.implicitHeight + 20
            radius: Theme.radius
            color: page.putBack.messageIsRefusal ? "#fdf3e1" : "#e6f5ec"
            border.color: page.putBack.messageIsRefusal ? Theme.warning : Theme.positive
            RowLayout {
                anchors.fill: parent
                anchors.leftMargin: 14
                anchors.rightMargin: 8
                Text {
                    id: putBackLine
                    text: page.putBack.message
                    wrapMode: Text.WordWrap
                    font.pixelSize: Theme.bodySize
                    color: Theme.text
                    Layout.fillWidth: true
                }
                Button {
                    text: "OK"
                    flat: true
                    onClicked: page.putBack.dismissMessage()
                }
            }
        }

        Rectangle {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.bottomMargin: 20
            color: Theme.card
            radius: Theme.radius
            border.color: Theme.border
            clip: true

            ListView {
                id: list
                anchors.fill: parent
                anchors.margins: 1
                model: page.log.entries
                boundsBehavior: Flickable.StopAtBounds
                ScrollBar.vertical: ScrollBar {}
                section.property: "dayTitle"
                section.criteria: ViewSection.FullString
                section.delegate: Rectangle {
                    required property string section
                    width: ListView.view.width
                    height: 34
                    color: "#f1f3f6"
                    RowLayout {
                        anchors.fill: parent
                        anchors.leftMargin: 16
                        anchors.rightMargin: 16
                        Text {
                            text: section
                            font.pixelSize: Theme.bodySize
                            font.weight: Font.DemiBold
                            color: Theme.text
                            Layout.fillWidth: true
                        }
                        Text {
                            text: page.log.dayTotals[section] || ""
                            visible: text.length > 0
                            font.pixelSize: Theme.bodySize
                            font.weight: Font.DemiBold
                            color: Theme.positive
                        }
                    }
                }
                delegate: Item {
                    id: row
                    required property string title
                    required property string subtitle
                    required property string sizeText
                    required property string timeText
                    required property string iconName
                    required property string pathsText
                    required property string entryID
                    // 1: still in the Trash, 2: no longer there, 3: put back already, 0: not a Trash move.
                    readonly property int putBackState: AppModel.putBack.states[entryID] || 0
                    readonly property string runText: AppModel.putBack.runButtons[entryID] || ""
                    width: ListView.view.width
                    implicitHeight: 62

                    RowLayout {
                        anchors.fill: parent
                        anchors.leftMargin: 14
                        anchors.rightMargin: 16
                        spacing: 12
                        Rectangle {
                            implicitWidth: 32
                            implicitHeight: 32
                            radius: 16
                            color: Theme.accentSoft
                            Button {
                                anchors.centerIn: parent
                                flat: true
                                padding: 0
                                focusPolicy: Qt.NoFocus
                                hoverEnabled: false
                                display: AbstractButton.IconOnly
                                icon.name: row.iconName
                                icon.width: 16
                                icon.height: 16
                                icon.color: Theme.accent
                                background: Item {}
                                Accessible.ignored: true
                            }
                        }
                        ColumnLayout {
                            Layout.fillWidth: true
                            spacing: 1
                            Text {
                                text: row.title
                                font.pixelSize: Theme.bodySize
                                font.weight: Font.DemiBold
                                color: Theme.text
                                elide: Text.ElideRight
                                Layout.fillWidth: true
                            }
                            Text {
                                text: row.subtitle
                                visible: text.length > 0
                                font.pixelSize: Theme.captionSize + 1
                                color: Theme.secondaryText
                                elide: Text.ElideRight
                                Layout.fillWidth: true
                            }
                            Text {
                                text: row.pathsText
                                font.pixelSize: Theme.captionSize
                                color: Theme.tertiaryText
                                elide: Text.ElideMiddle
                                Layout.fillWidth: true
                            }
                        }
                        RowLayout {
                            spacing: 6
                            visible: row.putBackState > 0
                            Button {
                                visible: row.runText.length > 0
                                text: row.runText
                                enabled: !AppModel.putBack.busy
                                onClicked: AppModel.putBack.putBackRun(row.entryID)
                            }
                            Button {
                                visible: row.putBackState === 1
                                text: AppModel.putBack.buttonText
                                enabled: !AppModel.putBack.busy
                                onClicked: AppModel.putBack.putBack(row.entryID)
                            }
                            Text {
                                visible: row.putBackState >= 2
                                text: row.putBackState === 2 ? AppModel.putBack.notInTrashText : AppModel.putBack.doneText
                                font.pixelSize: Theme.captionSize
                                color: Theme.tertiaryText
                            }
                        }
                        ColumnLayout {
                            spacing: 1
                            Text {
                                text: row.sizeText
                                visible: text.length > 0
                                font.pixelSize: Theme.bodySize
                                font.weight: Font.DemiBold
                                color: Theme.text
                                Layout.alignment: Qt.AlignRight
                            }
                            Text {
                                text: row.timeText
                                font.pixelSize: Theme.captionSize
                                color: Theme.tertiaryText
                                Layout.alignment: Qt.AlignRight
                            }
                        }
                    }
                    Rectangle {
                        anchors.bottom: parent.bottom
                        anchors.left: parent.left
                        anchors.leftMargin: 58
                        anchors.right: parent.right
                        height: 1
                        color: Theme.border
                    }
                }
            }

            Text {
                anchors.centerIn: parent
                width: parent.width - 80
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.WordWrap
                visible: list.count === 0
                text: page.log.isEmpty ? "Nothing here yet. Every file Brimvale moves or removes is listed here."
                                       : "Nothing in History matches “" + page.log.query.trim() + "”."
                font.pixelSize: Theme.bodySize
                color: Theme.secondaryText
            }
        }
    }

    Dialog {
        id: clearDialog
        title: page.log.clearTitle
        modal: true
        anchors.centerIn: parent
        Label {
            text: page.log.clearMessage
            wrapMode: Text.WordWrap
            width: 340
        }
        footer: RowLayout {
            spacing: 8
            Item { Layout.fillWidth: true }
            Button {
                text: page.log.cancelButton
                Layout.bottomMargin: 12
                onClicked: clearDialog.close()
            }
            Button {
                text: page.log.clearButton
                Layout.rightMargin: 12
                Layout.bottomMargin: 12
                onClicked: {
                    AppModel.activityLog.clearLog()
                    clearDialog.close()
                }
            }
        }
    }
}
