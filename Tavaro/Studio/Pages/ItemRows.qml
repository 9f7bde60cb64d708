import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Theme

// The items of a kind, each selected by a press.
ListView {
    id: list

    required property EditorSession session
    required property string kind
    required property string empty

    Layout.fillWidth: true
    implicitHeight: count > 0 ? Math.min(contentHeight, 6.5 * Theme.controlHeight) : hint.height
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    model: session.list(kind)
    Accessible.role: Accessible.List
    Accessible.name: kind
    ScrollBar.vertical: ScrollBar {}

    delegate: ItemDelegate {
        id: item

        required property string identity
        required property string title
        required property var from

        function show() {
            list.session.select(identity);
            if (from !== undefined) list.session.playhead = from;
        }

        width: list.width - 8
        text: title
        highlighted: list.session.selection.includes(identity)
        Accessible.name: from !== undefined ? qsTr("%1 at %2").arg(title).arg(NumberText.time(from)) : title
        onClicked: show()
        contentItem: Item {
            Label {
                anchors { left: parent.left; right: time.left; rightMargin: 8; verticalCenter: parent.verticalCenter }
                text: item.title
                elide: Text.ElideMiddle
                Accessible.ignored: true
            }
            Label {
                id: time

                anchors { right: parent.right; verticalCenter: parent.verticalCenter }
                text: item.from !== undefined ? NumberText.time(item.from) : ""
                color: Theme.colors.secondaryText
                font.pixelSize: Theme.captionSize
                Accessible.ignored: true
            }
        }
    }
    Label {
        id: hint

        width: parent.width
        visible: list.count === 0
        text: list.empty
        wrapMode: Text.Wrap
        color: Theme.colors.secondaryText
    }
}
