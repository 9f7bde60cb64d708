import QtQuick
import QtQuick.Controls.impl
import QtQuick.Templates as T
import Tavaro.Theme

// A picture, or a few words, without a frame. A picture alone takes its name from its tool tip.
T.ToolButton {
    id: control

    property bool isUsed // since the pointer came: what a press opened is not covered
    readonly property color ink: !enabled ? Theme.colors.disabledText : checked ? Theme.colors.accentText : Theme.colors.text

    implicitWidth: Math.max(Theme.controlHeight, implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: Theme.controlHeight
    horizontalPadding: text && display !== T.AbstractButton.IconOnly ? 10 : 8
    spacing: Theme.gap
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    font.weight: Font.Medium
    icon { width: Theme.iconSize; height: Theme.iconSize; color: ink }

    onPressed: isUsed = true
    onHoveredChanged: if (!hovered) isUsed = false
    ToolTip.visible: hovered && !isUsed && ToolTip.text !== ""
    ToolTip.delay: 600
    Accessible.name: text || ToolTip.text
    Accessible.description: enabled ? "" : qsTr("Not available now")
    Accessible.onPressAction: Reach.press(control)
    Keys.onReturnPressed: Reach.press(control)
    Keys.onEnterPressed: Reach.press(control)

    contentItem: IconLabel {
        spacing: control.spacing
        mirrored: control.mirrored
        display: control.display
        icon: control.icon
        text: Theme.literal(control.text)
        font: control.font
        color: control.ink
    }
    background: Rectangle {
        radius: Theme.radius
        color: control.down ? Theme.colors.pressed : control.checked ? Theme.colors.selection
                                                   : control.hovered ? Theme.colors.hover : "transparent"
        FocusRing { control: control }
    }
}
