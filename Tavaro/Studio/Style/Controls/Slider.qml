import QtQuick
import QtQuick.Templates as T
import Tavaro.Theme

T.Slider {
    id: control

    // As the accessibility tree asks for them.
    readonly property real minimumValue: from
    readonly property real maximumValue: to

    implicitWidth: horizontal ? 160 : Theme.controlHeight
    implicitHeight: horizontal ? Theme.controlHeight : 160
    padding: 8
    hoverEnabled: true
    Accessible.description: enabled ? "" : qsTr("Not available now")
    Accessible.onIncreaseAction: { increase(); moved(); }
    Accessible.onDecreaseAction: { decrease(); moved(); }

    handle: Rectangle {
        x: control.leftPadding + (control.horizontal ? control.visualPosition * (control.availableWidth - width) : (control.availableWidth - width) / 2)
        y: control.topPadding + (control.horizontal ? (control.availableHeight - height) / 2 : control.visualPosition * (control.availableHeight - height))
        implicitWidth: 16
        implicitHeight: 16
        radius: 8
        color: Theme.colors.knob
        border { width: 1; color: control.pressed || control.hovered ? Theme.colors.accent : Theme.colors.strongLine }
        FocusRing { control: control }
    }
    background: Rectangle {
        x: control.leftPadding + (control.horizontal ? 0 : (control.availableWidth - width) / 2)
        y: control.topPadding + (control.horizontal ? (control.availableHeight - height) / 2 : 0)
        width: control.horizontal ? control.availableWidth : 4
        height: control.horizontal ? 4 : control.availableHeight
        radius: 2
        color: Theme.colors.strongLine
        Rectangle {
            y: control.horizontal ? 0 : control.visualPosition * parent.height
            width: control.horizontal ? control.position * parent.width : 4
            height: control.horizontal ? 4 : control.position * parent.height
            radius: 2
            color: control.enabled ? Theme.colors.accent : Theme.colors.disabledText
        }
    }
}
