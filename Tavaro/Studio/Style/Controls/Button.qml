import QtQuick
import QtQuick.Controls.impl
import QtQuick.Templates as T
import Tavaro.Theme

// `highlighted` is the one thing to do here; `flat` one of many; `isDangerous` takes something away.
T.Button {
    id: control

    property bool isDangerous: false
    readonly property bool isFilled: highlighted || isDangerous
    readonly property color ink: !enabled ? Theme.colors.disabledText : isFilled ? Theme.colors.onAccent : Theme.colors.text
    readonly property color fill: {
        if (!enabled) return flat ? "transparent" : Theme.colors.hover;
        if (isDangerous) return down || hovered ? Theme.colors.dangerHover : Theme.colors.danger;
        if (highlighted) return down ? Theme.colors.accentPressed : hovered ? Theme.colors.accentHover : Theme.colors.accent;
        if (checked) return Theme.colors.selection;
        if (down) return Theme.colors.pressed;
        return hovered ? Theme.colors.hover : flat ? "transparent" : Theme.colors.raised;
    }

    implicitWidth: Math.max(implicitBackgroundWidth, implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: Theme.controlHeight
    horizontalPadding: text ? 14 : 8
    spacing: Theme.gap
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    font.weight: Font.Medium
    icon { width: Theme.iconSize; height: Theme.iconSize; color: ink }

    Accessible.name: text || T.ToolTip.text
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
        implicitWidth: control.text ? 72 : Theme.controlHeight
        radius: Theme.radius
        color: control.fill
        border { width: control.isFilled || control.flat || !control.enabled ? 0 : 1; color: Theme.colors.strongLine }
        FocusRing { control: control }
    }
}
