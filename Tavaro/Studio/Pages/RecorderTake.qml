import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Recorder
import Tavaro.Style
import Tavaro.Theme

// The take: begun, ordered about, ended; and what went wrong.
ColumnLayout {
    id: take

    required property RecorderModel recorder
    readonly property int phase: recorder.phase

    spacing: 10

    RecorderNotices {
        Layout.fillWidth: true
        recorder: take.recorder
    }
    Label {
        Layout.fillWidth: true
        horizontalAlignment: Text.AlignHCenter
        visible: take.phase !== RecorderModel.Idle
        text: take.recorder.isAsking ? qsTr("The desktop asks what to share.")
            : take.phase === RecorderModel.Countdown && !take.recorder.countdownLeft ? qsTr("Begins now")
            : take.phase === RecorderModel.Countdown ? qsTr("Begins in %1").arg(take.recorder.countdownLeft)
            : take.phase === RecorderModel.Finishing ? qsTr("Saving and polishing …")
            : take.phase === RecorderModel.ThrownAway ? qsTr("Thrown away")
            : take.recorder.time
        font.pixelSize: Theme.titleSize
        wrapMode: Text.Wrap
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
    RowLayout {
        Layout.fillWidth: true
        visible: take.recorder.isTaking
        spacing: 8

        Button {
            Layout.fillWidth: true
            text: take.phase === RecorderModel.Paused ? qsTr("Resume") : qsTr("Pause")
            onClicked: take.recorder.togglePause()
        }
        Button {
            Layout.fillWidth: true
            text: qsTr("Throw away")
            onClicked: take.recorder.throwAway()
        }
    }
    Button {
        Layout.fillWidth: true
        implicitHeight: 48
        highlighted: true
        visible: take.phase !== RecorderModel.Finishing && take.phase !== RecorderModel.ThrownAway
        enabled: take.phase !== RecorderModel.Idle || take.recorder.sources.chosenName.length > 0
        text: take.phase === RecorderModel.Idle ? qsTr("Record")
            : take.phase === RecorderModel.Countdown ? qsTr("Cancel") : qsTr("Stop")
        onClicked: take.recorder.toggle()
    }
    Label {
        Layout.fillWidth: true
        horizontalAlignment: Text.AlignHCenter
        visible: take.phase === RecorderModel.Idle
        text: take.recorder.sources.chosenName.length > 0 ? take.recorder.sources.chosenName
                                                          : qsTr("What was chosen is not there now.")
        textFormat: Text.PlainText
        elide: Text.ElideRight
        color: Theme.colors.secondaryText
    }
}
