import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Recorder
import Tavaro.Style
import Tavaro.Theme

// A small window above all others that never takes the keyboard.
Window {
    id: bar

    required property RecorderModel recorder
    required property RecorderBarModel model
    readonly property int phase: recorder.phase

    transientParent: null // else it goes where the window goes
    flags: Qt.Tool | Qt.FramelessWindowHint | Qt.WindowStaysOnTopHint | Qt.WindowDoesNotAcceptFocus
    title: qsTr("Tavaro recorder")
    width: Math.max(300, row.implicitWidth + 24)
    height: 52
    visible: model.isShown
    color: Theme.colors.raised

    // Not bound, since the hand that drags it sets these as well.
    function settle() {
        x = model.place.x
        y = model.place.y
    }
    Component.onCompleted: settle()
    Connections {
        target: bar.model
        function onPlaceChanged() { bar.settle() }
    }
    Binding { target: bar.model; property: "size"; value: Qt.size(bar.width, bar.height) }

    MouseArea {
        property point from

        anchors.fill: parent
        cursorShape: Qt.SizeAllCursor
        onPressed: mouse => from = Qt.point(mouse.x, mouse.y)
        onPositionChanged: mouse => {
            bar.x += mouse.x - from.x
            bar.y += mouse.y - from.y
        }
        onReleased: bar.model.keep(Qt.point(bar.x, bar.y))
    }

    Rectangle {
        anchors.fill: parent
        color: "transparent"
        border { width: 1; color: Theme.colors.strongLine }
    }
    RowLayout {
        id: row
        anchors { fill: parent; leftMargin: 14; rightMargin: 10 }
        spacing: 10

        Rectangle {
            implicitWidth: 12
            implicitHeight: 12
            radius: 6
            color: bar.recorder.health.length > 0 || bar.recorder.lostFrames > 0 ? Theme.colors.warning
                 : bar.phase === RecorderModel.Recording ? Theme.colors.danger : Theme.colors.disabledText
        }
        Label {
            Layout.fillWidth: true
            font.pixelSize: Theme.headingSize
            elide: Text.ElideRight
            textFormat: Text.PlainText
            text: bar.recorder.isAsking ? qsTr("The desktop asks what to share")
                : bar.phase === RecorderModel.Countdown && !bar.recorder.countdownLeft ? qsTr("Begins now")
            : bar.phase === RecorderModel.Countdown ? qsTr("Begins in %1").arg(bar.recorder.countdownLeft)
                : bar.phase === RecorderModel.Finishing ? qsTr("Saving …")
                : bar.phase === RecorderModel.ThrownAway ? qsTr("Thrown away")
                : bar.phase === RecorderModel.Paused ? qsTr("%1, paused").arg(bar.recorder.time) : bar.recorder.time
            Accessible.name: text
        }
        Label {
            visible: text.length > 0
            color: Theme.colors.secondaryText
            font.pixelSize: Theme.captionSize
            textFormat: Text.PlainText
            text: bar.recorder.health.length > 0 ? bar.recorder.health
                : bar.recorder.lostFrames > 0 ? qsTr("%1 lost").arg(bar.recorder.lostFrames)
                : bar.recorder.room.length > 0 ? bar.recorder.room
                : bar.recorder.startedBy.length > 0 ? qsTr("Started by %1").arg(bar.recorder.startedBy) : ""
        }
        RecorderMeter {
            visible: meter.isListening && bar.recorder.isTaking
            meter: bar.recorder.devices.microphoneMeter
            name: qsTr("Microphone")
            implicitWidth: 56
        }
        RecorderMeter {
            visible: meter.isListening && bar.recorder.isTaking
            meter: bar.recorder.devices.systemSoundMeter
            name: qsTr("System sound")
            implicitWidth: 56
        }
        component Order: Button {
            implicitHeight: 32
            focusPolicy: Qt.NoFocus
        }
        Order {
            visible: bar.phase === RecorderModel.ThrownAway
            text: qsTr("Undo (%1 s)").arg(bar.recorder.undoSeconds)
            onClicked: bar.recorder.undoThrowAway()
        }
        Order {
            visible: bar.recorder.isTaking
            text: bar.phase === RecorderModel.Paused ? qsTr("Resume") : qsTr("Pause")
            onClicked: bar.recorder.togglePause()
        }
        Order {
            visible: bar.recorder.isTaking
            text: qsTr("Throw away")
            onClicked: bar.recorder.throwAway()
        }
        Order {
            visible: bar.recorder.isTaking || bar.phase === RecorderModel.Countdown
            text: bar.phase === RecorderModel.Countdown ? qsTr("Cancel") : qsTr("Stop")
            onClicked: bar.recorder.stop()
        }
    }
}
