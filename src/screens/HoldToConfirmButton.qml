import QtQuick
import QtQuick.Controls
import Brimvale

// Permanent removal is never one click: press and hold until the bar is full.
Item {
    id: root
    property string title: "Hold to Delete"
    property string confirmedTitle: "Deleting…"
    property color tint: Theme.danger
    property bool prominent: true
    property alias duration: hold.duration
    property alias releaseRate: hold.releaseRate
    property alias disabled: hold.disabled
    readonly property alias progress: hold.progress
    readonly property alias committed: hold.committed
    signal action()

    implicitWidth: Math.max(180, label.implicitWidth + 40)
    implicitHeight: 34
    opacity: hold.disabled ? 0.45 : 1

    Accessible.role: Accessible.Button
    Accessible.name: hold.committed ? confirmedTitle : title
    Accessible.description: "Press and hold for 1.8 seconds to confirm. Releasing early cancels, and nothing is deleted."

    HoldToConfirm {
        id: hold
        onConfirmed: root.action()
    }

    Rectangle {
        anchors.fill: parent
        radius: 8
        color: root.prominent ? Qt.lighter(root.tint, 1.75) : Theme.card
        border.color: root.tint
        clip: true
        Rectangle {
            width: parent.width * hold.progress
            height: parent.height
            radius: 8
            color: root.tint
        }
        Label {
            id: label
            anchors.centerIn: parent
            text: hold.committed ? root.confirmedTitle : root.title
            font.pixelSize: Theme.bodySize
            font.bold: true
            color: hold.progress > 0.5 ? "white" : Theme.text
        }
    }

    MouseArea {
        anchors.fill: parent
        enabled: !hold.disabled
        onPressed: (mouse) => hold.press(mouse.x, mouse.y)
        onPositionChanged: (mouse) => hold.move(mouse.x, mouse.y)
        onReleased: hold.release()
        onCanceled: hold.release()
    }

    function reset() { hold.reset() }
}
