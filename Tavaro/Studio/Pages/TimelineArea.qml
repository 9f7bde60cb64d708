import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Theme

// The timeline with what scrolls and zooms it.
Item {
    id: area

    readonly property alias item: timeline

    Rectangle { width: parent.width; height: 1; color: Theme.colors.line; z: 1 }
    Timeline {
        id: timeline

        anchors.fill: parent
        Accessible.role: Accessible.List
        Accessible.name: qsTr("Timeline")
    }

    // Where it is follows the timeline, except while a hand holds it: then the timeline follows. Both at once go round in
    // circles where a place is rounded.
    component TimelineBar: ScrollBar {
        id: bar

        property real place: 0  // pixels of the content before what shows
        property real length: 1 // pixels of the content
        signal moved(real place)

        Binding on position { when: !bar.pressed; value: bar.place / bar.length; restoreMode: Binding.RestoreNone }
        onPositionChanged: if (pressed) moved(position * length)
    }
    TimelineBar {
        anchors { left: parent.left; leftMargin: timeline.headerWidth; right: parent.right; bottom: parent.bottom }
        orientation: Qt.Horizontal
        visible: !timeline.fits
        place: timeline.contentX
        length: Math.max(1, timeline.contentWidth)
        size: Math.min(1, width / length)
        onMoved: place => timeline.contentX = place
    }
    TimelineBar {
        anchors { right: parent.right; top: parent.top; topMargin: timeline.rulerHeight; bottom: parent.bottom }
        visible: size < 1
        place: timeline.contentY
        length: Math.max(1, timeline.contentHeight)
        size: Math.min(1, height / length)
        onMoved: place => timeline.contentY = place
    }
    // So that no time is read through the buttons.
    Rectangle {
        anchors { fill: scale; leftMargin: -2; rightMargin: -2 }
        radius: Theme.radius
        color: Theme.colors.surface
        border { width: 1; color: Theme.colors.line }
    }
    Row {
        id: scale

        anchors { right: parent.right; rightMargin: 2; top: parent.top; topMargin: 2 }
        height: timeline.rulerHeight - 4

        component Scale: ToolButton {
            height: parent.height
            implicitWidth: 28
            padding: 0
            icon { width: 13; height: 13 }
        }
        Scale { icon.source: Theme.icon("zoom-out"); ToolTip.text: qsTr("Show more of the film"); onClicked: timeline.zoomOut() }
        Scale { icon.source: Theme.icon("zoom-in"); ToolTip.text: qsTr("Show it larger"); onClicked: timeline.zoomIn() }
        Scale { icon.source: Theme.icon("fullscreen"); ToolTip.text: qsTr("Show all of it"); onClicked: timeline.fit() }
    }
}
