import QtQuick
import Brimvale
import Brimvale.Core

// The moment after a good clean: a spark burst, or confetti for a very large clean or a new
// record. It never takes input and ends by itself; with reduced motion nothing moves or shows.
Item {
    id: burstLayer
    readonly property var g: AppModel.guidance
    readonly property string tier: g.reducedMotion ? "none" : g.celebration
    enabled: false

    // One burst per celebration: a new id starts it over, the model's timer ends it.
    Connections {
        target: burstLayer.g
        function onCelebrationChanged() { if (burstLayer.tier !== "none") burst.restart() }
    }
    property real t: 0
    NumberAnimation {
        id: burst
        target: burstLayer; property: "t"
        from: 0; to: 1; duration: burstLayer.g.celebrationMilliseconds; easing.type: Easing.OutQuad
    }

    // Spark: a ring of short rays from the centre that fade as they grow.
    Repeater {
        model: burstLayer.tier === "spark" ? 12 : 0
        Rectangle {
            required property int index
            readonly property real angle: index * Math.PI / 6
            width: 4; height: 14 + 30 * burstLayer.t; radius: 2
            color: Theme.segmentColors[index % 5]
            x: burstLayer.width / 2 + Math.cos(angle) * 90 * burstLayer.t
            y: burstLayer.height / 2 + Math.sin(angle) * 90 * burstLayer.t
            rotation: angle * 180 / Math.PI + 90
            opacity: 1 - burstLayer.t
        }
    }
    // Confetti: pieces fall from the top with a little drift and spin.
    Repeater {
        model: burstLayer.tier === "confetti" ? 48 : 0
        Rectangle {
            required property int index
            readonly property real lane: (index * 37 % 97) / 97
            width: 8; height: 5; radius: 1
            color: Theme.segmentColors[index % 5]
            x: burstLayer.width * lane + Math.sin(burstLayer.t * 6 + index) * 20
            y: -20 + (burstLayer.height + 40) * burstLayer.t * (0.6 + 0.4 * ((index * 13 % 7) / 7))
            rotation: burstLayer.t * 720 * (index % 2 ? 1 : -1)
            opacity: burstLayer.t < 0.85 ? 1 : (1 - burstLayer.t) / 0.15
        }
    }
}
