import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Theme

// A point, an area or a size, by its numbers: shares in per cent, sizes in pixels.
Grid {
    id: parts

    required property var field
    readonly property bool isSize: field.editor === "size"
    readonly property real factor: isSize ? 1 : 100
    readonly property var names: ({
        point: [["x", qsTr("X")], ["y", qsTr("Y")]],
        rect: [["x", qsTr("X")], ["y", qsTr("Y")], ["width", qsTr("Width")], ["height", qsTr("Height")]],
        size: [["width", qsTr("Width")], ["height", qsTr("Height")]]
    })[field.editor]

    function give(part: string, number: real) { field.give(NumberText.withPart(field.value, part, number)) }

    columns: 2
    columnSpacing: 8
    rowSpacing: 4

    Repeater {
        model: parts.names
        RowLayout {
            id: part

            required property var modelData
            readonly property real number: parts.field.value?.[modelData[0]] ?? 0

            width: (parts.width - parts.columnSpacing) / 2
            spacing: 6
            Label {
                text: part.modelData[1]
                color: Theme.colors.secondaryText
                Accessible.ignored: true
            }
            NumberField {
                id: box

                Layout.fillWidth: true
                implicitWidth: 60
                name: qsTr("%1: %2").arg(parts.field.label).arg(part.modelData[1])
                unit: parts.isSize ? qsTr("px") : "%"
                shown: parts.field.isMixed ? "" : NumberText.shown(part.number, parts.factor, parts.isSize ? 1 : 0.001)
                Connections {
                    target: parts.field
                    function onRestored() { box.restore() }
                }
                onGiven: number => parts.give(part.modelData[0], number / parts.factor)
                onStepped: count => parts.give(part.modelData[0], part.number + count * (parts.isSize ? 2 : 0.01))
            }
        }
    }
}
