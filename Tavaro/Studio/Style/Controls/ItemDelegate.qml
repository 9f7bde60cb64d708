import QtQuick
import QtQuick.Controls.impl
import QtQuick.Templates as T
import Tavaro.Theme

T.ItemDelegate {
    id: control

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: Math.max(Theme.controlHeight, implicitContentHeight + topPadding + bottomPadding)
    padding: 6
    horizontalPadding: 10
    spacing: 10
    hoverEnabled: true
    icon { width: Theme.iconSize; height: Theme.iconSize; color: Theme.colors.secondaryText }
    Accessible.name: text
    Accessible.description: enabled ? "" : qsTr("Not available now")
    Accessible.onPressAction: Reach.press(control)

    contentItem: IconLabel {
        alignment: Qt.AlignLeft | Qt.AlignVCenter
        spacing: control.spacing
        mirrored: control.mirrored
        display: control.display
        icon: control.icon
        text: Theme.literal(control.text)
        font: control.font
        color: control.enabled ? Theme.colors.text : Theme.colors.disabledText
    }
    background: Rectangle {
        radius: Theme.radius
        color: control.highlighted ? Theme.colors.selection : control.down ? Theme.colors.pressed
                                                            : control.hovered ? Theme.colors.hover : "transparent"
        FocusRing { control: control }
    }
}
