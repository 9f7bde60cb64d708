import QtQuick
import QtQuick.Controls.impl
import QtQuick.Templates as T
import Tavaro.Theme

T.CheckBox {
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
        readonly property bool isOn: control.checkState !== Qt.Unchecked

        y: (control.height - height) / 2
        implicitWidth: 18
        implicitHeight: 18
        radius: 4
        color: isOn ? (control.enabled ? Theme.colors.accent : Theme.colors.disabledText) : Theme.colors.sunken
        border { width: isOn ? 0 : 1; color: Theme.colors.strongLine }
        IconImage {
            anchors.centerIn: parent
            visible: parent.isOn
            source: Theme.icon(control.checkState === Qt.PartiallyChecked ? "dash" : "check")
            sourceSize { width: 16; height: 16 }
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
