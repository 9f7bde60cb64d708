import QtQuick
import QtQuick.Controls
import Tavaro.Theme

// What is dragged is one step; a double click takes the default back.
Slider {
    id: slider

    required property var field

    function restore() { value = Qt.binding(() => field.value ?? field.least) }
    function drag() {
        if (pressed) field.fields.beginChange();
        else field.fields.endChange();
        restore();
    }

    implicitHeight: 22
    from: field.least
    to: field.most
    stepSize: field.step
    value: field.value ?? field.least
    opacity: field.isMixed ? 0.6 : 1
    Accessible.name: field.label
    onPressedChanged: drag()
    onMoved: field.give(value)

    TapHandler { onDoubleTapped: { slider.field.fields.endChange(); slider.field.give(undefined); } }
    Connections {
        target: slider.field
        function onRestored() { slider.restore() }
    }
}
