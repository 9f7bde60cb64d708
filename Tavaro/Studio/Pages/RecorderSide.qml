import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Recorder
import Tavaro.Style
import Tavaro.Theme

// What is recorded beside the picture, and how it begins.
ColumnLayout {
    id: side

    required property RecorderModel recorder
    property RecorderKeys keys: null
    readonly property RecorderDevices devices: recorder.devices

    spacing: 18

    RecorderDevice {
        Layout.fillWidth: true
        visible: side.devices.hasMicrophone
        name: qsTr("Microphone")
        on: side.devices.microphoneOn
        entries: side.devices.microphones
        chosen: side.devices.microphone
        warning: side.devices.microphoneMeter.warning
        onSwitched: isOn => side.devices.microphoneOn = isOn
        onPicked: id => side.devices.microphone = id

        RecorderMeter {
            Layout.fillWidth: true
            meter: side.devices.microphoneMeter
            name: qsTr("Microphone")
        }
    }
    RecorderDevice {
        Layout.fillWidth: true
        visible: side.devices.hasSystemSound
        name: qsTr("System sound")
        on: side.devices.systemSoundOn
        entries: side.devices.players
        chosen: side.devices.player
        warning: side.devices.systemSoundMeter.warning
        onSwitched: isOn => side.devices.systemSoundOn = isOn
        onPicked: id => side.devices.player = id

        RecorderMeter {
            Layout.fillWidth: true
            meter: side.devices.systemSoundMeter
            name: qsTr("System sound")
        }
    }
    RecorderDevice {
        Layout.fillWidth: true
        visible: side.devices.hasCamera
        name: qsTr("Camera")
        on: side.devices.cameraOn
        entries: side.devices.cameras
        chosen: side.devices.camera
        warning: side.devices.mirror.warning
        onSwitched: isOn => side.devices.cameraOn = isOn
        onPicked: id => side.devices.camera = id

        PictureItem {
            Layout.fillWidth: true
            Layout.preferredHeight: 140
            picture: side.devices.mirror.picture
            Accessible.role: Accessible.Graphic
            Accessible.name: qsTr("What the camera sees")
        }
    }
    Label {
        Layout.fillWidth: true
        visible: !side.devices.hasMicrophone && !side.devices.hasSystemSound && !side.devices.hasCamera
        text: qsTr("No microphone, camera or other sound is here to be recorded.")
        wrapMode: Text.Wrap
        color: Theme.colors.secondaryText
    }

    RowLayout {
        Layout.fillWidth: true

        Label { text: qsTr("Countdown"); font.weight: Font.Medium; Layout.fillWidth: true }
        ComboBox {
            id: countdown
            readonly property var choices: [0, 3, 5, 10]

            Layout.preferredWidth: 110
            model: choices.map(seconds => seconds === 0 ? qsTr("None") : qsTr("%1 s").arg(seconds))
            currentIndex: choices.indexOf(side.recorder.countdown)
            onActivated: index => side.recorder.countdown = choices[index]
            Accessible.name: qsTr("Countdown")
        }
    }
    Label {
        Layout.fillWidth: true
        visible: side.keys !== null && side.keys.canToggle
        text: side.keys !== null ? qsTr("%1 begins and ends a take from anywhere.").arg(side.keys.toggleKey.replace(/\b[a-z]/g, letter => letter.toUpperCase())) : ""
        wrapMode: Text.Wrap
        color: Theme.colors.secondaryText
        font.pixelSize: Theme.captionSize
    }
    Label {
        Layout.fillWidth: true
        visible: side.keys !== null && side.keys.problem.length > 0
        text: side.keys !== null ? side.keys.problem : ""
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        color: Theme.colors.warning
        font.pixelSize: Theme.captionSize
    }
    Item { Layout.fillHeight: true }
}
