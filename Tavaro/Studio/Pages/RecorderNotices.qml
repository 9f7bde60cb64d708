import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Recorder
import Tavaro.Style
import Tavaro.Theme

// What the user should know of the take, and the way back from throwing it away.
ColumnLayout {
    id: notices

    required property RecorderModel recorder
    readonly property bool isUnderWay: recorder.phase !== RecorderModel.Idle

    spacing: 6

    component Notice: Label {
        Layout.fillWidth: true
        visible: text.length > 0
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        font.pixelSize: Theme.bodySize
        Accessible.role: Accessible.AlertMessage
        Accessible.name: text
    }

    Notice {
        text: notices.isUnderWay && notices.recorder.startedBy.length > 0
              ? qsTr("Started by %1").arg(notices.recorder.startedBy) : ""
        font.weight: Font.Medium
    }
    Notice { text: notices.recorder.health; color: Theme.colors.warning }
    Notice {
        text: notices.isUnderWay && notices.recorder.lostFrames > 0
              ? qsTr("%1 frames could not be taken in time.").arg(notices.recorder.lostFrames) : ""
        color: Theme.colors.warning
    }
    Notice {
        text: notices.recorder.room
        color: notices.recorder.roomMinutes < 5 ? Theme.colors.warning : Theme.colors.text
    }
    Rows {
        spacing: notices.spacing
        model: notices.recorder.remarks
        Notice {
            required property string modelData
            text: modelData
        }
    }
    RowLayout {
        Layout.fillWidth: true
        visible: notices.recorder.failure.length > 0

        Notice { text: notices.recorder.failure; color: Theme.colors.warning }
        Button {
            text: qsTr("Close")
            flat: true
            onClicked: notices.recorder.forgetFailure()
        }
    }
    Button {
        Layout.fillWidth: true
        visible: notices.recorder.phase === RecorderModel.ThrownAway
        text: qsTr("Undo (%1 s)").arg(notices.recorder.undoSeconds)
        onClicked: notices.recorder.undoThrowAway()
    }
}
