import QtQuick
import QtQuick.Controls
import Brimvale
import Brimvale.Core

// Help › Take the Tour: the feature tour by itself, over the main window.
Popup {
    id: sheet
    modal: true
    closePolicy: Popup.CloseOnEscape
    anchors.centerIn: Overlay.overlay
    width: Math.min(580, (parent ? parent.width : 580) - 80)
    padding: 24
    visible: AppModel.guidance.isTourPresented
    onClosed: AppModel.guidance.closeTour()
    background: Rectangle { color: Theme.card; radius: Theme.radius; border.color: Theme.border }
    contentItem: TourView {}
}
