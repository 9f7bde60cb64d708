import QtQuick
import QtQuick.Controls
import Tavaro.Style
import Tavaro.Theme

// Few of short names side by side; else a list.
Loader {
    id: choice

    required property var field
    readonly property var none: [{ name: "", label: qsTr("None") }]
    readonly property var choices: field.isOptional ? none.concat(field.options) : field.options
    readonly property int letters: choices.reduce((sum, each) => sum + each.label.length, 0)
    readonly property string current: field.isMixed ? "–" : field.value ?? ""

    function choose(name: string) { field.give(name === "" ? undefined : name) }

    sourceComponent: choices.length <= 4 && letters <= 20 ? segments : box

    Component {
        id: segments

        Segmented {
            name: choice.field.label
            options: choice.choices.map(each => ({ text: each.label, value: each.name }))
            value: choice.current
            onChosen: value => choice.choose(value)
        }
    }
    Component {
        id: box

        ComboBox {
            model: choice.choices
            textRole: "label"
            currentIndex: choice.choices.findIndex(each => each.name === choice.current)
            displayText: choice.field.isMixed ? qsTr("Mixed") : currentText
            Accessible.name: choice.field.label
            onActivated: index => {
                choice.choose(choice.choices[index].name);
                currentIndex = Qt.binding(() => choice.choices.findIndex(each => each.name === choice.current));
            }
        }
    }
}
