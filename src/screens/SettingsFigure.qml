import QtQuick
import QtQuick.Controls

// A whole number typed or stepped. Any figure may be entered; `committed` hands it to the
// setting's setter, whose clamp decides, and the box then shows what the setting holds.
SpinBox {
    id: figure
    property int current: 0
    signal committed(int value)
    from: 0
    to: 100000
    editable: true
    value: current
    textFromValue: (v, locale) => String(v)
    valueFromText: (text, locale) => parseInt(text, 10) || 0
    onValueModified: {
        committed(value)
        value = Qt.binding(() => figure.current)
    }
}
