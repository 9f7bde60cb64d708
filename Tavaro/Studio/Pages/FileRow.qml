import QtQuick
import QtQuick.Controls
import Tavaro.Style
import Tavaro.Theme

// A folder or a file of the dialog for files.
Item {
    id: row

    required property int index
    required property string name
    required property string path
    required property bool isFolder
    required property string detail
    property bool isPicked
    property bool hasFocus
    signal chosen(bool isMore) // `isMore`: beside what is chosen already
    signal opened

    implicitHeight: Theme.controlHeight
    Accessible.role: Accessible.ListItem
    Accessible.name: isFolder ? qsTr("Folder %1").arg(name) : name
    Accessible.selectable: true
    Accessible.selected: isPicked
    Accessible.onPressAction: isFolder ? opened() : chosen(false)

    HoverHandler { id: hover }
    TapHandler {
        id: tap

        onTapped: row.chosen(tap.point.modifiers & Qt.ControlModifier)
        onDoubleTapped: row.opened()
    }
    Rectangle {
        anchors.fill: parent
        radius: Theme.radius
        color: row.isPicked ? Theme.colors.selection : hover.hovered ? Theme.colors.hover : "transparent"
        border { width: row.hasFocus ? 2 : 0; color: Theme.colors.focus }
    }
    Icon {
        id: sign

        anchors { left: parent.left; leftMargin: 10; verticalCenter: parent.verticalCenter }
        icon: row.isFolder ? "folder" : "file-earmark-play"
        color: row.isFolder ? Theme.colors.accentText : Theme.colors.secondaryText
    }
    Label {
        anchors { left: sign.right; leftMargin: 10; right: when.left; rightMargin: 12; verticalCenter: parent.verticalCenter }
        text: row.name
        textFormat: Text.PlainText
        elide: Text.ElideMiddle
        maximumLineCount: 1 // a name may have more
        Accessible.ignored: true
    }
    Label {
        id: when

        anchors { right: parent.right; rightMargin: 10; verticalCenter: parent.verticalCenter }
        text: row.detail
        color: Theme.colors.secondaryText
        font.pixelSize: Theme.captionSize
        Accessible.ignored: true
    }
}
