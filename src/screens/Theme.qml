pragma Singleton
import QtQuick

// Colours, sizes and type used by every screen.
QtObject {
    readonly property color window: "#f6f7f9"
    readonly property color sidebar: "#eceef2"
    readonly property color card: "#ffffff"
    readonly property color border: "#dfe2e8"
    readonly property color text: "#1d2330"
    readonly property color secondaryText: "#5f6878"
    readonly property color tertiaryText: "#8a93a3"
    readonly property color accent: "#2f6fe4"
    readonly property color accentSoft: "#e3ecfc"
    readonly property color positive: "#1f9d55"
    readonly property color warning: "#d98c00"
    readonly property color danger: "#d64545"
    readonly property color selection: "#dce6f9"
    readonly property int radius: 10
    readonly property int spacing: 16
    readonly property int titleSize: 24
    readonly property int headingSize: 15
    readonly property int bodySize: 13
    readonly property int captionSize: 11
    readonly property var segmentColors: ["#2f6fe4", "#7b5cd6", "#e0832f", "#1f9d8a", "#d64585", "#8a93a3"]
}
