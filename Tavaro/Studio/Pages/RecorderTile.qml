import QtQuick
import QtQuick.Controls
import Tavaro.Recorder
import Tavaro.Style
import Tavaro.Theme

// One source with its live still.
AbstractButton {
    id: tile

    property alias still: picture.picture
    property string name
    property string detail

    implicitWidth: 208
    implicitHeight: 172
    hoverEnabled: true
    checkable: false

    Accessible.role: Accessible.RadioButton
    Accessible.name: detail.length > 0 ? name + ", " + detail : name
    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onPressAction: Reach.press(tile)

    background: Rectangle {
        radius: 10
        color: tile.checked ? Qt.alpha(Theme.colors.accent, 0.14)
                            : tile.hovered ? Qt.alpha(Theme.colors.text, 0.06) : "transparent"
        border.width: tile.checked || tile.visualFocus ? 2 : 1
        border.color: tile.checked || tile.visualFocus ? Theme.colors.accent : Qt.alpha(Theme.colors.text, 0.12)
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
            radius: 6
            color: Qt.alpha(Theme.colors.text, 0.06)
        }
        Label {
            id: title
            anchors { top: picture.bottom; left: parent.left; right: parent.right; margins: 10 }
            text: tile.name
            textFormat: Text.PlainText
            elide: Text.ElideRight
            font.weight: Font.Medium
        }
        Label {
            anchors { top: title.bottom; topMargin: 2; left: title.left; right: title.right }
            text: tile.detail
            textFormat: Text.PlainText
            elide: Text.ElideRight
            opacity: 0.75
            font.pixelSize: Theme.captionSize
        }
    }
}
