import QtQuick
import QtQuick.Controls.impl
import QtQuick.Templates as T
import Tavaro.Theme

T.RadioButton {
    id: control

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: Theme.controlHeight
    spacing: 10
    hoverEnabled: true
    Accessible.name: text
    Accessible.description: enabled ? "" : qsTr("Not available now")
    Accessible.onPressAction: Reach.press(control)
    Accessible.onToggleAction: Reach.press(control)

    indicator: Rectangle {
        y: (control.height - height) / 2
        implicitWidth: 18
        implicitHeight: 18
        radius: 9
        color: control.checked ? Theme.colors.accent : Theme.colors.sunken
        border { width: control.checked ? 0 : 1; color: Theme.colors.strongLine }
        Rectangle {
            anchors.centerIn: parent
            visible: control.checked
            width: 8
            height: 8
            radius: 4
            color: Theme.colors.onAccent
        }
        FocusRing { control: control }
    }
    contentItem: CheckLabel {
        leftPadding: control.indicator.width + control.spacing
        text: control.text
        font: control.font
        color: control.enabled ? Theme.colors.text : Theme.colors.disabledText
    }
}
