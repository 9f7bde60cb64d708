import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Recorder
import Tavaro.Style
import Tavaro.Theme

// The takes that run in terminals, to be ordered about from here too.
Rows {
    id: list

    required property TerminalTakes takes

    component Order: ToolButton {
        implicitWidth: 30
        implicitHeight: 30
        icon { width: 14; height: 14 }
    }

    spacing: 2 * Theme.gap
    bottomPadding: Theme.gap
    model: takes

    Card {
        id: take

        required property int index
        required property string title
        required property bool isPaused
        required property bool isTaking

        implicitHeight: Math.max(row.implicitHeight, text.implicitHeight) + 16
        Accessible.role: Accessible.Grouping
        Accessible.name: title
        RowLayout {
            id: row

            anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter; leftMargin: 12; rightMargin: 6 }
            spacing: 2
            Label {
                id: text

                Layout.fillWidth: true
                text: take.title
                wrapMode: Text.Wrap
                font.pixelSize: Theme.captionSize
            }
            Order {
                visible: take.isTaking
                icon.source: Theme.icon(take.isPaused ? "record-fill" : "pause-fill")
                ToolTip.text: take.isPaused ? qsTr("Resume the terminal’s take") : qsTr("Pause the terminal’s take")
                onClicked: list.takes.togglePause(take.index)
            }
            Order {
                visible: take.isTaking
                icon.source: Theme.icon("stop-fill")
                ToolTip.text: qsTr("End the terminal’s take")
                onClicked: list.takes.stop(take.index)
            }
        }
    }
}
