import QtQuick
import QtQuick.Controls
import Tavaro.Recorder
import Tavaro.Style
import Tavaro.Theme

// One source with its live still.
RadioButton {
    id: tile

    property alias still: picture.picture
    property string name
    property string detail

    implicitWidth: 208
    implicitHeight: 172
    focusPolicy: Qt.StrongFocus
    Accessible.name: [name, detail].filter(Boolean).join(", ")
    Keys.onReturnPressed: Reach.press(tile)
    Keys.onEnterPressed: Reach.press(tile)

    indicator: null
    background: Rectangle {
        radius: Theme.cardRadius
        color: tile.checked ? Theme.colors.selection : tile.hovered ? Theme.colors.hover : Theme.colors.surface
        border { width: tile.checked ? 2 : 1; color: tile.checked ? Theme.colors.accent : Theme.colors.line }
        FocusRing { control: tile }
    }

    contentItem: Item {
        PictureItem {
            id: picture
            anchors { top: parent.top; left: parent.left; right: parent.right; margins: 10 }
            height: 104
        }
        Rectangle {
            anchors.fill: picture
            visible: picture.shownRect.width === 0
            radius: Theme.radius
            color: Theme.colors.sunken
        }
        Label {
            id: title
            anchors { top: picture.bottom; left: parent.left; right: parent.right; margins: 10 }
            text: tile.name
            elide: Text.ElideRight
            font.weight: Font.Medium
            Accessible.ignored: true
        }
        Label {
            anchors { top: title.bottom; topMargin: 2; left: title.left; right: title.right }
            text: tile.detail
            elide: Text.ElideRight
            color: Theme.colors.secondaryText
            font.pixelSize: Theme.captionSize
            Accessible.ignored: true
        }
    }
}
