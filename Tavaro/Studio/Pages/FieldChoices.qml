import QtQuick
import QtQuick.Controls
import Tavaro.Theme

// Any of several.
Column {
    id: choices

    required property var field
    readonly property var chosen: field.value ?? []

    function choose(name: string, isOn: bool) { field.give(isOn ? chosen.concat([name]) : chosen.filter(each => each !== name)) }

    Repeater {
        model: choices.field.options
        CheckBox {
            id: box

            required property var modelData

            implicitHeight: 28
            text: modelData.label
            checked: choices.chosen.includes(modelData.name)
            onToggled: {
                choices.choose(modelData.name, checked);
                checked = Qt.binding(() => choices.chosen.includes(box.modelData.name));
            }
        }
    }
}
