import QtQuick
import QtQuick.Controls

// Seven days, oldest first, today last; a bar's height follows the day's bytes, an empty
// day keeps a stub so the week still reads as a week. Hover shows the day's total.
Row {
    id: chart
    property var bars: []
    spacing: 6
    Accessible.role: Accessible.Chart
    Accessible.name: "Freed per day. Axes: Day, Freed."
    readonly property real peak: {
        let m = 0
        for (const b of chart.bars) m = Math.max(m, b.bytes)
        return m
    }
    Repeater {
        model: chart.bars
        delegate: Column {
            id: day
            required property var modelData
            required property int index
            spacing: 4
            Item {
                width: 18
                height: 56
                Rectangle {
                    anchors.bottom: parent.bottom
                    width: parent.width
                    radius: 3
                    height: chart.peak > 0 ? Math.max(3, parent.height * day.modelData.bytes / chart.peak) : 3
                    color: day.modelData.bytes > 0 ? Theme.accent : "#e1e5ec"
                }
                ToolTip.visible: barHover.hovered && day.modelData.text.length > 0
                ToolTip.text: day.modelData.text
                HoverHandler { id: barHover }
            }
            Text {
                text: day.modelData.label
                width: 18
                horizontalAlignment: Text.AlignHCenter
                font.pixelSize: Theme.captionSize
                font.weight: day.index === 6 ? Font.DemiBold : Font.Normal
                color: day.index === 6 ? Theme.text : Theme.tertiaryText
            }
        }
    }
}
