import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Theme

// A number in its unit, typed or stepped by the arrow keys.
NumberField {
    id: box

    required property var field

    name: field.label
    unit: field.unit
    shown: field.isMixed ? "" : NumberText.shown(field.value, field.shownFactor, field.step)
    placeholderText: field.isMixed ? "–" : ""
    onGiven: number => field.give(number / field.shownFactor)
    onStepped: count => field.give(NumberText.stepped(field.value, count * field.step, field.step))

    Connections {
        target: box.field
        function onRestored() { box.restore() }
    }
}
