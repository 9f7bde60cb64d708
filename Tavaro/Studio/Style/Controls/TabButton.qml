import QtQuick
import QtQuick.Controls.impl
import QtQuick.Templates as T
import Tavaro.Theme

T.TabButton {
    id: control

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: Theme.controlHeight
    padding: 6
    horizontalPadding: 12
    spacing: Theme.gap
    hoverEnabled: true
    font.weight: Font.Medium
    icon { width: Theme.iconSize; height: Theme.iconSize; color: checked ? Theme.colors.text : Theme.colors.secondaryText }
    Accessible.name: text
    Accessible.description: enabled ? "" : qsTr("Not available now")
    Accessible.onPressAction: Reach.press(control)

    contentItem: IconLabel {
        spacing: control.spacing
        mirrored: control.mirrored
        display: control.display
        icon: control.icon
        text: Theme.literal(control.text)
        font: control.font
        color: control.checked ? Theme.colors.text : Theme.colors.secondaryText
    }
    background: Rectangle {
        radius: Theme.radius
        color: control.checked ? Theme.colors.selection : control.hovered ? Theme.colors.hover : "transparent"
        FocusRing { control: control }
    }
}
