import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Brimvale
import Brimvale.Core

// The feature tour: one slide at a time with its small animated scene (made-up figures, no
// real data), and Back, Skip and the forward button. In the first run it is the wait of the
// scan, with the scan's state in the footer.
ColumnLayout {
    id: view
    readonly property var g: AppModel.guidance
    readonly property bool firstRun: g.tourMode === "firstRun"
    spacing: 12

    Rectangle {
        id: stage
        Layout.fillWidth: true
        Layout.preferredHeight: 150
        radius: Theme.radius
        color: Theme.accentSoft
        Accessible.role: Accessible.Graphic
        Accessible.name: view.g.tourAccessibleDescription
        clip: true

        // How far the scene's animation has run, 0 to 1; it stands at 1 when motion is reduced.
        property real t: 1
        NumberAnimation {
            id: play
            target: stage; property: "t"
            from: 0; to: 1; duration: 1400; easing.type: Easing.OutCubic
        }
        // Each slide's scene plays once as it appears; with reduced motion it stands finished.
        Connections {
            target: view.g
            function onTourChanged() { if (!view.g.reducedMotion) play.restart() }
        }
        Component.onCompleted: if (!view.g.reducedMotion) play.restart()

        // See where the space went: a disk bar fills to its used share.
        Item {
            anchors.fill: parent
            visible: view.g.tourScene === "space"
            Rectangle {
                id: diskBar
                x: 40; y: 58; width: parent.width - 80; height: 18; radius: 9; color: Theme.card
                Rectangle { width: parent.width * 0.632 * stage.t; height: parent.height; radius: 9; color: Theme.accent }
            }
            Label { x: 40; y: 88; text: "184 GB free of 500 GB"; color: Theme.text; font.pixelSize: Theme.headingSize }
        }
        // Clean what comes back: three cache blocks drop into the Trash.
        Item {
            anchors.fill: parent
            visible: view.g.tourScene === "smartClean"
            Repeater {
                model: 3
                Rectangle {
                    required property int index
                    width: 46; height: 30; radius: 6; color: Theme.segmentColors[index]
                    x: 60 + index * 60 + (stage.width - 230 - index * 60) * stage.t
                    y: 36 + 20 * stage.t
                    opacity: 1 - 0.7 * stage.t
                }
            }
            Rectangle { x: stage.width - 96; y: 40; width: 52; height: 60; radius: 8; color: Theme.card; border.color: Theme.border }
            Label { x: 40; y: 112; text: "12.7 GB moved to the Trash"; color: Theme.text; font.pixelSize: Theme.headingSize }
        }
        // Downloads tidy by itself: a file slides into its folder.
        Item {
            anchors.fill: parent
            visible: view.g.tourScene === "autoSort"
            Rectangle { x: stage.width - 120; y: 44; width: 70; height: 52; radius: 8; color: Theme.card; border.color: Theme.border }
            Rectangle {
                width: 36; height: 44; radius: 4; color: Theme.segmentColors[2]
                x: 50 + (stage.width - 210) * stage.t; y: 48
            }
            Label { x: 40; y: 112; text: "Move installers older than a week to the Trash"; color: Theme.text }
        }
        // Duplicates: three copies, one stays.
        Item {
            anchors.fill: parent
            visible: view.g.tourScene === "duplicates"
            Repeater {
                model: 3
                Rectangle {
                    required property int index
                    width: 40; height: 50; radius: 4; color: Theme.segmentColors[1]
                    x: 60 + index * 56; y: 40
                    opacity: index === 0 ? 1 : 1 - 0.85 * stage.t
                }
            }
            Label { x: 40; y: 112; text: "1 copy stays \u00b7 3.4 MB back"; color: Theme.text; font.pixelSize: Theme.headingSize }
        }
    }

    Label {
        text: view.g.tourTitle
        font.pixelSize: Theme.headingSize + 3
        font.bold: true
        color: Theme.text
    }
    Label {
        Layout.fillWidth: true
        wrapMode: Text.WordWrap
        text: view.g.tourText
        color: Theme.secondaryText
    }
    RowLayout {
        Layout.fillWidth: true
        Label {
            visible: view.firstRun
            text: view.g.tourFooter
            color: Theme.tertiaryText
            font.pixelSize: Theme.captionSize
        }
        Item { Layout.fillWidth: true }
        Button { text: "Back"; enabled: view.g.tourIndex > 0; onClicked: view.g.tourBack() }
        Button { text: "Skip"; visible: view.g.tourIndex < view.g.tourSlideCount - 1; onClicked: view.g.tourSkip() }
        Button {
            objectName: "tourForward"
            text: view.g.tourForwardTitle
            highlighted: true
            enabled: view.g.tourCanGoForward
            onClicked: view.g.tourNext()
        }
    }
}
