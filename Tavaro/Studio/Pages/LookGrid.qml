import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Theme

// The choices of a field, each as it would look on this film.
ColumnLayout {
    id: grid

    required property EditorDesk desk
    required property string section
    required property string path
    required property string subject
    property string label
    property int columns: 3
    property var without: []
    readonly property InspectorModel fields: desk.session.fieldsOf(section)
    readonly property var choices: fields.values && fields.choices(path).filter(each => !without.includes(each.name))
    readonly property string current: fields.values[path] ?? ""

    Layout.fillWidth: true
    spacing: 4

    Label {
        visible: grid.label !== ""
        text: grid.label
    }
    Flow {
        Layout.fillWidth: true
        spacing: 4
        Repeater {
            model: grid.choices.length
            LookTile {
                required property int index
                readonly property var choice: grid.choices[index]
                readonly property string whole: [grid.section, grid.path].filter(Boolean).join(".")

                width: Math.floor((grid.width - 4 * (grid.columns - 1)) / grid.columns)
                desk: grid.desk
                subject: grid.subject
                text: choice.label
                changes: ({ [whole]: choice.name })
                checked: grid.current === choice.name
                onClicked: grid.fields.set(grid.path, choice.name)
            }
        }
    }
}
