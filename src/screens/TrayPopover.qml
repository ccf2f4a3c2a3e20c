import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// The tray item's popover: a short status and the ways into the main window. It is built when
// the item is clicked and thrown away when it closes (focus lost, Escape, or a button).
// Nothing can be removed from here: "Clean Now…" opens the preview in the main window.
Window {
    id: popover
    required property var status

    flags: Qt.Tool | Qt.FramelessWindowHint | Qt.WindowStaysOnTopHint
    width: 320
    height: column.implicitHeight + 24
    color: Theme.card
    title: "Brimvale"

    property bool wasActive: false
    onActiveChanged: {
        if (active) wasActive = true
        else if (wasActive) close()
    }

    Shortcut {
        sequence: "Escape"
        onActivated: popover.close()
    }

    Rectangle {
        anchors.fill: parent
        color: "transparent"
        border.color: Theme.border
        radius: 4
    }

    ColumnLayout {
        id: column
        anchors.fill: parent
        anchors.margins: 12
        spacing: 8

        // 1. Free space.
        Text {
            text: popover.status.freeLine
            font.pixelSize: Theme.headingSize + 3
            font.bold: true
            color: Theme.text
        }
        Text {
            visible: text !== ""
            text: popover.status.totalLine
            font.pixelSize: Theme.bodySize
            color: Theme.secondaryText
        }

        // 2. Critically low space.
        RowLayout {
            visible: popover.status.lowSpaceLine !== ""
            Layout.fillWidth: true
            Text {
                Layout.fillWidth: true
                text: popover.status.lowSpaceLine
                wrapMode: Text.Wrap
                color: Theme.danger
                font.pixelSize: Theme.bodySize
            }
            Button {
                text: "Review && Clean"
                onClicked: { popover.status.cleanNow(); popover.close() }
            }
        }

        Rectangle { Layout.fillWidth: true; implicitHeight: 1; color: Theme.border }

        // 4. Today. 5. Candidates.
        GridLayout {
            columns: 2
            Layout.fillWidth: true
            columnSpacing: 12
            Text { text: "Freed today"; color: Theme.secondaryText; font.pixelSize: Theme.bodySize }
            Text { text: popover.status.freedTodayText; color: Theme.text; font.pixelSize: Theme.bodySize; Layout.fillWidth: true; horizontalAlignment: Text.AlignRight }
            Text { text: "Cleanup candidates"; color: Theme.secondaryText; font.pixelSize: Theme.bodySize }
            Text { text: popover.status.candidatesText; color: Theme.text; font.pixelSize: Theme.bodySize; Layout.fillWidth: true; horizontalAlignment: Text.AlignRight }
        }

        // 6. The way to a clean: a preview in the main window.
        Button {
            Layout.fillWidth: true
            text: "Clean Now…"
            highlighted: true
            onClicked: { popover.status.cleanNow(); popover.close() }
        }
        Text {
            Layout.fillWidth: true
            text: "Opens a preview in the main window. Nothing is removed from here."
            wrapMode: Text.Wrap
            color: Theme.tertiaryText
            font.pixelSize: Theme.captionSize
        }

        Rectangle { Layout.fillWidth: true; implicitHeight: 1; color: Theme.border }

        // 7. Recent.
        Text { text: "Recent"; font.bold: true; color: Theme.text; font.pixelSize: Theme.bodySize }
        Text {
            visible: text !== ""
            text: popover.status.recentNote
            color: Theme.secondaryText
            font.pixelSize: Theme.bodySize
        }
        Repeater {
            model: popover.status.recentRows
            delegate: RowLayout {
                id: recentRow
                required property var modelData
                Layout.fillWidth: true
                Text {
                    Layout.fillWidth: true
                    text: recentRow.modelData.title
                    elide: Text.ElideRight
                    color: Theme.text
                    font.pixelSize: Theme.bodySize
                }
                Text { text: recentRow.modelData.bytesText; color: Theme.secondaryText; font.pixelSize: Theme.bodySize }
            }
        }

        Rectangle { Layout.fillWidth: true; implicitHeight: 1; color: Theme.border }

        // 8. The next automatic clean.
        Text {
            Layout.fillWidth: true
            text: popover.status.nextAutoCleanText
            color: Theme.secondaryText
            font.pixelSize: Theme.bodySize
        }

        // 9. Footnote and version.
        Text {
            Layout.fillWidth: true
            text: "Candidate sizes are estimates. Moving files to Trash does not free space until Trash is emptied."
            wrapMode: Text.Wrap
            color: Theme.tertiaryText
            font.pixelSize: Theme.captionSize
        }
        Text { text: popover.status.versionText; color: Theme.tertiaryText; font.pixelSize: Theme.captionSize }

        // 10. Buttons.
        RowLayout {
            Layout.fillWidth: true
            Button { text: "Open Brimvale"; onClicked: { popover.status.openWindow(); popover.close() } }
            Button { text: "Settings"; onClicked: { popover.status.openSettings(); popover.close() } }
            Item { Layout.fillWidth: true }
            Button { text: "Quit"; onClicked: popover.status.quit() }
        }
    }

    Component.onCompleted: popover.status.popoverShown()
}
