import QtQuick
import QtQuick.Controls
import Tavaro.Exports
import Tavaro.Style
import Tavaro.Theme

// The export under way, from wherever one is.
Card {
    id: activity

    required property ExportQueue queue

    visible: queue.activeCount > 0
    implicitHeight: words.height + 40
    Accessible.role: Accessible.Grouping
    Accessible.name: queue.summary

    Label {
        id: words

        anchors { left: parent.left; right: cancel.left; top: parent.top; leftMargin: 12; topMargin: 10 }
        text: activity.queue.summary
        wrapMode: Text.Wrap
        maximumLineCount: 2
        elide: Text.ElideRight
        font.pixelSize: Theme.captionSize
    }
    ToolButton {
        id: cancel

        anchors { right: parent.right; top: parent.top; margins: 4 }
        implicitWidth: 26
        implicitHeight: 26
        icon { source: Theme.icon("x-lg"); width: 10; height: 10 }
        ToolTip.text: qsTr("Cancel the export under way")
        onClicked: activity.queue.cancel(0)
    }
    ProgressBar {
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom; margins: 12 }
        value: activity.queue.share
        Accessible.name: activity.queue.summary
    }
}
