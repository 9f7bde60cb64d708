import QtQuick
import QtQuick.Controls
import Tavaro.Library
import Tavaro.Style
import Tavaro.Theme

Rows {
    spacing: 2 * Theme.gap
    bottomPadding: Theme.gap
    model: Library.activities

    Card {
        id: activity

        required property int index
        required property string title
        required property double progress

        implicitHeight: 60
        Accessible.role: Accessible.Grouping
        Accessible.name: title

        Label {
            anchors { left: parent.left; right: cancel.left; top: parent.top; leftMargin: 12; topMargin: 10 }
            text: activity.title
            elide: Text.ElideMiddle
            font.pixelSize: Theme.captionSize
        }
        ToolButton {
            id: cancel

            anchors { right: parent.right; top: parent.top; margins: 4 }
            implicitWidth: 26
            implicitHeight: 26
            icon { source: Theme.icon("x-lg"); width: 10; height: 10 }
            ToolTip.text: qsTr("Stop: %1").arg(activity.title)
            onClicked: Library.activities.cancel(activity.index)
        }
        ProgressBar {
            anchors { left: parent.left; right: parent.right; bottom: parent.bottom; margins: 12 }
            indeterminate: activity.progress < 0
            value: Math.max(activity.progress, 0)
            Accessible.name: activity.title
        }
    }
}
