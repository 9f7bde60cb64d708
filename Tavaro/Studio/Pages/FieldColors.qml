import QtQuick
import QtQuick.Controls
import Tavaro.Theme

// Colours in their order, as many as there are.
Flow {
    id: colors

    required property var field
    readonly property var shown: field.value ?? []

    spacing: 6

    Repeater {
        model: colors.shown.length
        ColorButton {
            required property int index

            name: qsTr("%1 %2").arg(colors.field.label).arg(index + 1)
            session: colors.field.session
            value: colors.shown[index] ?? "transparent"
            onBegun: colors.field.fields.beginChange()
            onEnded: colors.field.fields.endChange()
            onGiven: color => colors.field.give(colors.shown.map((each, i) => i === index ? color : each))
        }
    }
    ToolButton {
        implicitHeight: 26
        icon { source: Theme.icon("plus-lg"); width: 12; height: 12 }
        ToolTip.text: qsTr("Add a color")
        onClicked: colors.field.give(colors.shown.concat([colors.shown[colors.shown.length - 1] ?? "#8080ff"]))
    }
    ToolButton {
        implicitHeight: 26
        visible: colors.shown.length > 1
        icon { source: Theme.icon("dash"); width: 12; height: 12 }
        ToolTip.text: qsTr("Remove the last color")
        onClicked: colors.field.give(colors.shown.slice(0, -1))
    }
}
