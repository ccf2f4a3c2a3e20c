import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import QtQuick.Layouts
import Brimvale.Core

// What can go back right now: the disk's free space, how it moved, what arrived today.
Item {
    id: page
    property string title: "Overview"
    property string tagline: "What can go back, right now"
    readonly property var log: AppModel.activityLog
    readonly property var access: AppModel.folderAccess.folderState
    // Which standing folder the chooser is asked for: "desktop" or "downloads".
    property string askingFor: ""

    // A folder that is there but can't be read is asked for again, never treated as gone.
    FolderDialog {
        id: accessChooser
        title: page.askingFor === "desktop" ? "Choose your Desktop folder again." : "Choose your Downloads folder again."
        onAccepted: AppModel.folderAccess.grantFolderAccess(page.askingFor, decodeURIComponent(String(selectedFolder).replace(/^file:\/\//, "")))
    }

    ScrollView {
        anchors.fill: parent
        contentWidth: availableWidth
        ColumnLayout {
            width: page.width
            spacing: Theme.spacing
            Item { implicitHeight: 12 }
            SectionHeader {
                title: page.title
                tagline: page.tagline
                Layout.leftMargin: 28
                Layout.rightMargin: 28
            }

            LowSpaceBanner {
                Layout.leftMargin: 28
                Layout.rightMargin: 28
            }

            Repeater {
                model: [{ key: "downloads", name: "Downloads", readable: page.access.downloadsReadable, path: page.access.downloadsPath },
                        { key: "desktop", name: "Desktop", readable: page.access.desktopReadable, path: page.access.desktopPath }]
                delegate: RowLayout {
                    id: accessRow
                    required property var modelData
                    visible: !accessRow.modelData.readable && accessRow.modelData.path !== ""
                    Layout.leftMargin: 28
                    Layout.rightMargin: 28
                    Layout.fillWidth: true
                    spacing: 10
                    Text {
                        Layout.fillWidth: true
                        wrapMode: Text.WordWrap
                        font.pixelSize: Theme.bodySize
                        color: Theme.secondaryText
                        text: "Brimvale can\u2019t read " + accessRow.modelData.name + " (" + accessRow.modelData.path + "), so its files are left out. Choose the folder again to include them."
                    }
                    Button {
                        text: "Choose Folder\u2026"
                        onClicked: { page.askingFor = accessRow.modelData.key; accessChooser.open() }
                    }
                }
            }

            Card {
                id: storage
                title: "Storage"
                trailing: AppModel.survey.scanning || AppModel.smartClean.scanning ? "Scanning…" : AppModel.space.volumeName
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                readonly property bool measured: AppModel.space.totalBytes >= 1

                RowLayout {
                    visible: storage.measured
                    spacing: 6
                    Text {
                        text: AppModel.space.freeText
                        font.pixelSize: 28
                        font.weight: Font.Bold
                        color: Theme.text
                    }
                    Text {
                        text: " free of " + AppModel.space.totalText
                        font.pixelSize: Theme.headingSize
                        color: Theme.secondaryText
                        Layout.alignment: Qt.AlignBaseline
                    }
                }
                StorageBar {
                    visible: storage.measured
                }
                Text {
                    visible: storage.measured && AppModel.space.midnightDeltaText.length > 0
                    text: AppModel.space.midnightDeltaText
                    font.pixelSize: Theme.bodySize
                    color: Theme.secondaryText
                }
                Text {
                    visible: storage.measured && AppModel.space.lastOpenDeltaText.length > 0
                    text: AppModel.space.lastOpenDeltaText
                    font.pixelSize: Theme.bodySize
                    color: Theme.secondaryText
                }
                RowLayout {
                    visible: !storage.measured && !AppModel.isRefreshing
                    spacing: 12
                    Text {
                        text: "Couldn't measure the disk"
                        font.pixelSize: Theme.bodySize
                        color: Theme.danger
                    }
                    Button {
                        text: "Retry"
                        onClicked: AppModel.refresh()
                    }
                }
                Text {
                    visible: !storage.measured && AppModel.isRefreshing
                    text: "Scanning…"
                    font.pixelSize: Theme.bodySize
                    color: Theme.secondaryText
                }
                Text {
                    visible: storage.measured
                    Layout.fillWidth: true
                    wrapMode: Text.WordWrap
                    text: AppModel.survey.footnote
                    font.pixelSize: Theme.captionSize
                    color: Theme.tertiaryText
                }
            }

            // What Smart Clean would give back now, and the way to it: always a preview first.
            Card {
                id: reclaim
                title: "Ready to reclaim"
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                readonly property bool scanning: AppModel.smartClean.scanning || AppModel.survey.scanning
                readonly property bool hasSome: AppModel.smartClean.reclaimableBytes > 0

                RowLayout {
                    Layout.fillWidth: true
                    spacing: 14
                    ColumnLayout {
                        Layout.fillWidth: true
                        spacing: 2
                        RowLayout {
                            spacing: 6
                            Text {
                                text: reclaim.hasSome ? AppModel.smartClean.reclaimableText
                                    : reclaim.scanning ? "Scanning…" : "All tidy"
                                font.pixelSize: reclaim.hasSome ? 28 : Theme.headingSize + 3
                                font.weight: Font.Bold
                                color: reclaim.hasSome ? Theme.accent : Theme.text
                            }
                            Text {
                                visible: reclaim.hasSome
                                text: "ready to reclaim"
                                font.pixelSize: Theme.headingSize
                                color: Theme.secondaryText
                                Layout.alignment: Qt.AlignBaseline
                            }
                        }
                        Text {
                            visible: text.length > 0
                            text: reclaim.hasSome ? "Preview first. Nothing moves until you confirm."
                                : reclaim.scanning ? "" : "Nothing is waiting to be cleaned."
                            font.pixelSize: Theme.bodySize
                            color: Theme.secondaryText
                        }
                    }
                    Button {
                        visible: reclaim.hasSome
                        text: "Review && Clean"
                        highlighted: true
                        onClicked: AppModel.openCleanupPreview()
                    }
                }
                Text {
                    visible: text.length > 0
                    text: AppModel.cleanRun.afterCleanLine
                    font.pixelSize: Theme.bodySize
                    color: Theme.positive
                }
            }

            Card {
                title: "Freed this week"
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                RowLayout {
                    Layout.fillWidth: true
                    spacing: 18
                    ColumnLayout {
                        Layout.fillWidth: true
                        spacing: 2
                        Text {
                            text: page.log.weekTotalText
                            font.pixelSize: 22
                            font.weight: Font.Bold
                            color: page.log.weekBytes >= 1 ? Theme.positive : Theme.text
                        }
                        Text {
                            visible: page.log.weekBytes < 1
                            Layout.fillWidth: true
                            wrapMode: Text.WordWrap
                            text: "Nothing freed yet. Your first cleanup shows up here."
                            font.pixelSize: Theme.bodySize
                            color: Theme.secondaryText
                        }
                    }
                    WeekChart { bars: page.log.weekBars }
                }
            }

            Card {
                title: "New today"
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Text {
                    visible: AppModel.space.newTodayFiles.count === 0
                    text: "Nothing new on your Desktop or in Downloads."
                    font.pixelSize: Theme.bodySize
                    color: Theme.secondaryText
                }
                Repeater {
                    model: AppModel.space.newTodayFiles
                    delegate: RowLayout {
                        id: fileRow
                        required property var model
                        Layout.fillWidth: true
                        spacing: 10
                        Rectangle {
                            implicitWidth: 28
                            implicitHeight: 28
                            radius: 6
                            color: Theme.accentSoft
                            Text {
                                anchors.centerIn: parent
                                text: fileRow.model.location === "Desktop" ? "▣" : "↓"
                                color: Theme.accent
                                font.pixelSize: 14
                            }
                        }
                        ColumnLayout {
                            spacing: 0
                            Layout.fillWidth: true
                            Text {
                                text: fileRow.model.name
                                font.pixelSize: Theme.bodySize
                                color: Theme.text
                                elide: Text.ElideMiddle
                                Layout.fillWidth: true
                            }
                            Text {
                                text: fileRow.model.kind + " · " + fileRow.model.location + " · " + fileRow.model.addedText
                                font.pixelSize: Theme.captionSize
                                color: Theme.tertiaryText
                            }
                            Text {
                                visible: fileRow.model.coveredBy !== ""
                                text: "Rule: " + fileRow.model.coveredBy
                                font.pixelSize: Theme.captionSize
                                color: Theme.accent
                                elide: Text.ElideRight
                                Layout.fillWidth: true
                            }
                        }
                        Text {
                            text: fileRow.model.sizeText
                            font.pixelSize: Theme.bodySize
                            color: Theme.secondaryText
                        }
                    }
                }
            }

            TopSpaceUsers {
                Layout.leftMargin: 28
                Layout.rightMargin: 28
            }

            CoverageList {
                Layout.leftMargin: 28
                Layout.rightMargin: 28
            }

            RowLayout {
                Layout.leftMargin: 28
                Layout.rightMargin: 28
                Layout.bottomMargin: 20
                Text {
                    text: AppModel.statusLine
                    font.pixelSize: Theme.captionSize
                    color: Theme.tertiaryText
                    Layout.fillWidth: true
                }
                Button {
                    text: "Refresh"
                    onClicked: AppModel.refreshEverything()
                }
            }
        }
    }
}
