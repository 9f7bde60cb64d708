import QtQuick
import QtQuick.Controls
import Tavaro.Theme

// One of a few: `options` are records with `text` and `value`.
Rectangle {
    id: control

    required property string name
    property var options: []
    property var value
    property real needed: 0 // by all options, side by side
    signal chosen(var value)

    function measure() {
        let sum = row.spacing * Math.max(0, repeater.count - 1);
        for (let i = 0; i < repeater.count; ++i) sum += repeater.itemAt(i)?.implicitWidth ?? 0;
        needed = sum;
    }

    implicitWidth: needed + 4
    implicitHeight: Theme.controlHeight
    radius: Theme.radius + 1
    color: Theme.colors.sunken
    border { width: 1; color: Theme.colors.line }
    Accessible.role: Accessible.Grouping
    Accessible.name: name

    Row {
        id: row

        readonly property real spare: Math.max(0, width - control.needed) / Math.max(1, repeater.count)

        anchors.fill: parent
        anchors.margins: 2
        spacing: 2
        Repeater {
            id: repeater

            model: control.options
            onItemAdded: control.measure()
            onCountChanged: control.measure()
            RadioButton {
                id: option

                required property var modelData

                width: implicitWidth + row.spare
                height: row.height
                implicitWidth: label.implicitWidth + 28
                text: modelData.text
                checked: control.value === modelData.value
                onToggled: control.chosen(modelData.value)
                onImplicitWidthChanged: control.measure()
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
