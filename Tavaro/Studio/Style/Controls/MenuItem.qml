import QtQuick
import QtQuick.Controls.impl
import QtQuick.Templates as T
import Tavaro.Theme

T.MenuItem {
    id: control

    property bool isDangerous: false
    readonly property color ink: !enabled ? Theme.colors.disabledText : isDangerous ? Theme.colors.dangerText : Theme.colors.text

    implicitWidth: Math.max(180, implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: 30
    leftPadding: 10
    rightPadding: 14
    spacing: 10
    icon { width: Theme.iconSize; height: Theme.iconSize; color: isDangerous ? ink : Theme.colors.secondaryText }
    Accessible.name: text
    Accessible.description: enabled ? "" : qsTr("Not available now")
    Accessible.onPressAction: Reach.press(control)

    contentItem: IconLabel {
        leftPadding: control.checkable ? 24 : 0
        alignment: Qt.AlignLeft | Qt.AlignVCenter
        spacing: control.spacing
        mirrored: control.mirrored
        icon: control.icon
        text: Theme.literal(control.text)
        font: control.font
        color: control.ink
    }
    indicator: IconImage {
        x: 10
        anchors.verticalCenter: parent.verticalCenter
        visible: control.checkable && control.checked
        source: control.checkable ? Theme.icon("check") : ""
        sourceSize { width: 16; height: 16 }
        color: Theme.colors.accentText
    }
    arrow: IconImage {
        x: control.width - width - 8
        anchors.verticalCenter: parent.verticalCenter
        visible: control.subMenu
        source: control.subMenu ? Theme.icon("chevron-right") : ""
        sourceSize { width: 10; height: 10 }
        color: Theme.colors.secondaryText
    }
    background: Rectangle {
        radius: 5
        color: control.highlighted || control.down ? Theme.colors.hover : "transparent"
    }
}
