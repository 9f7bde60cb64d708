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
        id: cell

        required property int index
        required property string sourceID
        required property string name
        required property string detail
        required property var still

        width: grid.cellWidth
        height: grid.cellHeight

        RecorderTile {
            anchors { fill: parent; margins: 6 }
            name: cell.name
            detail: cell.detail
            still: cell.still
            checked: grid.sources.chosen === cell.sourceID
            onClicked: grid.sources.choose(cell.sourceID)
            onActiveFocusChanged: if (activeFocus) grid.positionViewAtIndex(cell.index, GridView.Contain)
        }
    }

    Label {
        anchors.centerIn: parent
        visible: grid.count === 0
        text: grid.emptyText
        color: Theme.colors.secondaryText
    }
}
