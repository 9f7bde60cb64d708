import QtQuick
import QtQuick.Controls.impl
import QtQuick.Templates as T
import Tavaro.Theme

// One place of several to go to; `checked` where one is.
T.TabButton {
    id: control

    readonly property color ink: checked ? Theme.colors.text : Theme.colors.secondaryText

    implicitWidth: 160
    implicitHeight: Theme.rowHeight
    leftPadding: 12
    rightPadding: 12
    spacing: 10
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    font.weight: checked ? Font.DemiBold : Font.Medium
    icon { width: Theme.iconSize; height: Theme.iconSize; color: checked ? Theme.colors.accentText : ink }

    Accessible.name: text
    Accessible.description: enabled ? "" : qsTr("Not available now")
    Accessible.onPressAction: Reach.press(control)
    Keys.onReturnPressed: Reach.press(control)
    Keys.onEnterPressed: Reach.press(control)

    contentItem: Item {
        IconImage {
            id: picture

            anchors.verticalCenter: parent.verticalCenter
            source: control.icon.source
            sourceSize { width: control.icon.width; height: control.icon.height }
            color: control.icon.color
        }
        Text {
            anchors { left: picture.right; right: parent.right; leftMargin: control.spacing; verticalCenter: parent.verticalCenter }
            text: control.text
            textFormat: Text.PlainText
            font: control.font
            color: control.ink
            elide: Text.ElideRight
            Accessible.ignored: true
        }
    }
    background: Rectangle {
        radius: Theme.radius
        color: control.checked ? Theme.colors.selection : control.down ? Theme.colors.pressed
                                                        : control.hovered ? Theme.colors.hover : "transparent"
        FocusRing { control: control }
    }
}
