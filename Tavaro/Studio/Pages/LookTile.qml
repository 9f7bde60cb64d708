import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Style
import Tavaro.Theme

// A choice as it would look, with its name.
RadioButton {
    id: tile

    required property EditorDesk desk
    required property string subject
    required property var changes
    property bool isNamed: true
    property int pictureHeight: 54

    implicitWidth: 92
    implicitHeight: pictureHeight + (isNamed ? 24 : 6)
    padding: 3
    focusPolicy: Qt.StrongFocus
    Keys.onReturnPressed: Reach.press(tile)
    Keys.onEnterPressed: Reach.press(tile)
    ToolTip.visible: hovered && !isNamed
    ToolTip.delay: 600
    ToolTip.text: text

    indicator: null
    contentItem: Item {
        Rectangle {
            width: parent.width
            height: tile.pictureHeight
            visible: still.isEmpty
            radius: 4
            color: Theme.colors.sunken
            Icon {
                anchors.centerIn: parent
                visible: tile.subject === "camera"
                icon: "camera-video"
                color: Theme.colors.disabledText
            }
        }
        LookStill {
            id: still

            width: parent.width
            height: tile.pictureHeight
            looks: tile.desk.looks
            subject: tile.subject
            changes: tile.changes
        }
        Label {
            anchors { bottom: parent.bottom; bottomMargin: 1; horizontalCenter: parent.horizontalCenter }
            width: Math.min(implicitWidth, parent.width)
            visible: tile.isNamed
            text: tile.text
            elide: Text.ElideRight
            font { pixelSize: Theme.captionSize - 1; weight: tile.checked ? Font.DemiBold : Font.Normal }
            Accessible.ignored: true
        }
    }
    background: Rectangle {
        radius: Theme.radius + 1
        color: tile.checked ? Theme.colors.selection : tile.hovered ? Theme.colors.hover : "transparent"
        border { width: tile.checked ? 2 : 0; color: Theme.colors.accent }
        FocusRing { control: tile }
    }
}
