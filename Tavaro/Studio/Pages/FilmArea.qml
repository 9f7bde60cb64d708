import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Theme

// The film's picture with the handles on it, and what it lacks.
Rectangle {
    id: area

    required property string name
    property EditorDesk desk: null
    readonly property var problems: (desk?.preview.problems ?? []).concat(desk?.preview.playback.soundProblems ?? [])

    color: Theme.colors.sunken

    FilmTools {
        id: tools

        anchors { left: parent.left; top: parent.top; bottom: parent.bottom; margins: 8 }
        handles: handles
        enabled: area.desk !== null
    }
    // At its actual size the picture may be larger than its room.
    Flickable {
        id: room

        readonly property Item focused: Window.activeFocusItem

        // What has the keyboard is to be seen: the least way there, and its start where it is larger than the room.
        function reveal(item: Item) {
            const place = item.mapToItem(contentItem, 0, 0);
            contentX = start(contentX, place.x, item.width, width, contentWidth);
            contentY = start(contentY, place.y, item.height, height, contentHeight);
        }
        function start(now: real, first: real, length: real, seen: real, all: real): real {
            const nearest = Math.min(Math.max(now, first + length + 16 - seen), first - 16);
            return Math.max(0, Math.min(all - seen, nearest));
        }

        anchors { fill: parent; margins: 16; leftMargin: tools.width + 16 }
        clip: tools.isActual
        boundsBehavior: Flickable.StopAtBounds
        contentWidth: tools.isActual ? Math.max(width, picture.actualSize.width) : width
        contentHeight: tools.isActual ? Math.max(height, picture.actualSize.height) : height
        interactive: tools.isActual
        onFocusedChanged: if (focused?.parent === handles) reveal(focused)
        ScrollBar.horizontal: ScrollBar { visible: tools.isActual && size < 1 }
        ScrollBar.vertical: ScrollBar { visible: tools.isActual && size < 1 }

        PreviewItem {
            id: picture

            width: room.contentWidth
            height: room.contentHeight
            preview: area.desk?.preview ?? null
            Accessible.role: Accessible.Graphic
            Accessible.name: qsTr("The film of %1").arg(area.name)
        }
        FilmThings {
            id: handles

            anchors.fill: picture
            session: area.desk?.session ?? null
            preview: area.desk?.preview ?? null
            film: picture.filmRect
        }
    }
    Rectangle {
        anchors { bottom: parent.bottom; bottomMargin: 12; horizontalCenter: parent.horizontalCenter }
        width: Math.min(problem.implicitWidth + 24, parent.width - 48)
        height: problem.implicitHeight + 16
        radius: Theme.radius
        visible: area.problems.length > 0
        color: Theme.colors.raised
        border { width: 1; color: Theme.colors.line }

        Label {
            id: problem

            anchors { fill: parent; leftMargin: 12; rightMargin: 12 }
            verticalAlignment: Text.AlignVCenter
            text: area.problems[0] ?? ""
            textFormat: Text.PlainText
            elide: Text.ElideRight
        }
    }
}
