import QtQuick
import Brimvale
import Brimvale.Core

// The moment after a good clean: a spark burst, or confetti for a very large clean or a new
// record. It never takes input and ends by itself; with reduced motion nothing moves or shows.
Item {
    id: layer
    readonly property var g: AppModel.guidance
    readonly property string tier: g.reducedMotion ? "none" : g.celebration
    enabled: false

    // One burst per celebration: a new id starts it over, the model's timer ends it.
    Connections {
        target: layer.g
        function onCelebrationChanged() { if (layer.tier !== "none") burst.restart() }
    }
    property real t: 0
    NumberAnimation on t { id: burst; running: false; from: 0; to: 1; duration: layer.g.celebrationMilliseconds; easing.type: Easing.OutQuad }

    // Spark: a ring of short rays from the centre that fade as they grow.
    Repeater {
        model: layer.tier === "spark" ? 12 : 0
        Rectangle {
            required property int index
            readonly property real angle: index * Math.PI / 6
            width: 4; height: 14 + 30 * layer.t; radius: 2
            color: Theme.segmentColors[index % 5]
            x: layer.width / 2 + Math.cos(angle) * 90 * layer.t
            y: layer.height / 2 + Math.sin(angle) * 90 * layer.t
            rotation: angle * 180 / Math.PI + 90
            opacity: 1 - layer.t
        }
    }
    // Confetti: pieces fall from the top with a little drift and spin.
    Repeater {
        model: layer.tier === "confetti" ? 48 : 0
        Rectangle {
            required property int index
            readonly property real lane: (index * 37 % 97) / 97
            width: 8; height: 5; radius: 1
            color: Theme.segmentColors[index % 5]
            x: layer.width * lane + Math.sin(layer.t * 6 + index) * 20
            y: -20 + (layer.height + 40) * layer.t * (0.6 + 0.4 * ((index * 13 % 7) / 7))
            rotation: layer.t * 720 * (index % 2 ? 1 : -1)
            opacity: layer.t < 0.85 ? 1 : (1 - layer.t) / 0.15
        }
    }
}
