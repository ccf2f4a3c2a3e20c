import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// One pane of the settings window: its cards in a column that scrolls when the window is short.
ScrollView {
    id: pane
    default property alias content: column.data
    contentWidth: availableWidth
    ColumnLayout {
        id: column
        x: 20
        width: pane.availableWidth - 40
        spacing: 12
        Item { implicitHeight: 8 }
    }
}
