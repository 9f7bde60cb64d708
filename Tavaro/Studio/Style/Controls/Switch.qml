import QtQuick
import QtQuick.Controls.impl
import QtQuick.Templates as T
import Tavaro.Theme

T.Switch {
    id: control

    implicitWidth: text ? implicitContentWidth + leftPadding + rightPadding : 36
    implicitHeight: Theme.controlHeight
    spacing: 10
    hoverEnabled: true
    Accessible.name: text
    Accessible.description: enabled ? "" : qsTr("Not available now")
    Accessible.onPressAction: Reach.press(control)
    Accessible.onToggleAction: Reach.press(control)

    indicator: Rectangle {
        y: (control.height - height) / 2
        implicitWidth: 36
        implicitHeight: 20
        radius: 10
        color: control.checked ? (control.enabled ? Theme.colors.accent : Theme.colors.disabledText) : Theme.colors.strongLine
        Rectangle {
            x: 2 + control.visualPosition * 16
            y: 2
            width: 16
            height: 16
            radius: 8
            color: Theme.colors.knob
            Behavior on x {
                enabled: !control.down
                NumberAnimation { duration: Theme.quick }
            }
        }
        FocusRing { control: control }
    }
    contentItem: CheckLabel {
        leftPadding: control.text ? control.indicator.width + control.spacing : 0
        text: control.text
        font: control.font
        color: control.enabled ? Theme.colors.text : Theme.colors.disabledText
    }
}
