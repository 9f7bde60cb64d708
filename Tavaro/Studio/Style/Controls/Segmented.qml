import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Theme

// One of a few: `options` are records with `text` and `value`.
Rectangle {
    id: control

    required property string name
    property var options: []
    property var value
    signal chosen(var value)

    implicitWidth: row.implicitWidth + 4
    implicitHeight: Theme.controlHeight
    radius: Theme.radius + 1
    color: Theme.colors.sunken
    border { width: 1; color: Theme.colors.line }
    Accessible.role: Accessible.Grouping
    Accessible.name: name

    RowLayout {
        id: row

        anchors.fill: parent
        anchors.margins: 2
        spacing: 2
        Repeater {
            model: control.options
            RadioButton {
                id: option

                required property var modelData

                Layout.fillWidth: true
                Layout.fillHeight: true
                implicitWidth: label.implicitWidth + 28
                text: modelData.text
                checked: control.value === modelData.value
                onToggled: control.chosen(modelData.value)
                indicator: null
                contentItem: Text {
                    id: label

                    text: option.text
                    textFormat: Text.PlainText
                    font { family: Theme.face; pixelSize: Theme.bodySize; weight: Font.Medium }
                    color: option.checked ? Theme.colors.text : Theme.colors.secondaryText
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                    Accessible.ignored: true
                }
                background: Rectangle {
                    radius: Theme.radius - 1
                    color: option.checked ? (Theme.isDark ? Theme.colors.pressed : Theme.colors.raised) : option.hovered ? Theme.colors.hover : "transparent"
                    border { width: option.checked ? 1 : 0; color: Theme.colors.line }
                    FocusRing { control: option }
                }
            }
        }
    }
}
