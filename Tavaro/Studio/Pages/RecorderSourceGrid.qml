import QtQuick
import QtQuick.Controls
import Tavaro.Recorder
import Tavaro.Style
import Tavaro.Theme

// All sources of one kind, as tiles.
GridView {
    id: grid

    required property RecorderSources sources
    property string emptyText

    clip: true
    cellWidth: Math.floor(width / Math.max(1, Math.floor(width / 220)))
    cellHeight: 184
    boundsBehavior: Flickable.StopAtBounds
    ScrollBar.vertical: ScrollBar {}

    delegate: Item {
        required property string sourceID
        required property string name
        required property string detail
        required property var still

        width: grid.cellWidth
        height: grid.cellHeight

        RecorderTile {
            anchors { fill: parent; margins: 6 }
            name: parent.name
            detail: parent.detail
            still: parent.still
            checked: grid.sources.chosen === parent.sourceID
            onClicked: grid.sources.choose(parent.sourceID)
        }
    }

    Label {
        anchors.centerIn: parent
        visible: grid.count === 0
        text: grid.emptyText
        opacity: 0.75
    }
}
