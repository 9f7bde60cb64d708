import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Recorder
import Tavaro.Style
import Tavaro.Theme

// The take that is under way, whoever began it: in a corner, above everything, and never with the keyboard.
Window {
    id: bar

    readonly property bool isTaking: Recorder.phase === "recording" || Recorder.phase === "paused"

    transientParent: null // else it goes where the window goes
    flags: Qt.Window | Qt.FramelessWindowHint | Qt.WindowStaysOnTopHint | Qt.WindowDoesNotAcceptFocus
    title: qsTr("Tavaro recorder")
    visible: Recorder.phase !== "idle"
    width: row.implicitWidth + 24
    height: 52
    x: Screen.virtualX + Screen.width - width - 24
    y: Screen.virtualY + Screen.height - height - 48
    color: Theme.colors.raised

    Rectangle {
        anchors.fill: parent
        color: "transparent"
        border { width: 1; color: Theme.colors.strongLine }
    }
    RowLayout {
        id: row

        anchors { fill: parent; leftMargin: 16; rightMargin: 8 }
        spacing: 8
        Rectangle {
            implicitWidth: 10
            implicitHeight: 10
            radius: 5
            color: Recorder.phase === "recording" ? Theme.colors.danger : Theme.colors.disabledText
        }
        Label {
            text: ({
                countdown: qsTr("Starts in %1").arg(Recorder.time),
                recording: Recorder.time,
                paused: qsTr("%1, paused").arg(Recorder.time),
                finishing: qsTr("Saving…")
            })[Recorder.phase] ?? ""
            font.weight: Font.DemiBold
        }
        Label {
            visible: !Recorder.isOurs
            text: qsTr("Started by an agent")
            color: Theme.colors.secondaryText
        }
        Label {
            visible: text !== ""
            text: Recorder.note
            color: Theme.colors.warning
        }
        ToolButton {
            visible: bar.isTaking
            icon.source: Theme.icon(Recorder.phase === "paused" ? "play-fill" : "pause-fill")
            ToolTip.text: Recorder.phase === "paused" ? qsTr("Go on") : qsTr("Pause")
            onClicked: Recorder.phase === "paused" ? Recorder.resume() : Recorder.pause()
        }
        ToolButton {
            visible: Recorder.phase !== "finishing"
            icon.source: Theme.icon("stop-fill")
            ToolTip.text: qsTr("Stop recording")
            onClicked: Recorder.stop()
        }
        ToolButton {
            visible: bar.isTaking
            icon.source: Theme.icon("trash")
            ToolTip.text: qsTr("Throw the take away")
            onClicked: question.visible = true
        }
        Button {
            id: question

            visible: false
            text: qsTr("Throw away for good")
            isDangerous: true
            onClicked: { visible = false; Recorder.discard(); }
            Timer { running: question.visible; interval: 5000; onTriggered: question.visible = false }
        }
    }
}
