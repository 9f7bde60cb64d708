import QtQuick
import QtQuick.Controls
import Tavaro.Recorder
import Tavaro.Style
import Tavaro.Theme

// How loud a sound is, and for a moment how loud it was.
Item {
    id: bar

    required property SoundMeter meter
    property string name

    implicitHeight: 6
    implicitWidth: 80

    Accessible.role: Accessible.ProgressBar
    Accessible.name: qsTr("%1 level").arg(name)
    Accessible.description: meter.description

    Rectangle {
        anchors.fill: parent
        radius: height / 2
        color: Qt.alpha(Theme.colors.text, 0.14)
    }
    Rectangle {
        height: parent.height
        width: Math.max(bar.meter.level > 0 ? height : 0, parent.width * bar.meter.level)
        radius: height / 2
        color: bar.meter.level > 0.95 ? Theme.colors.danger : Theme.colors.loudness
    }
    Rectangle {
        visible: bar.meter.peak > 0
        x: Math.min(parent.width - width, parent.width * bar.meter.peak)
        width: 2
        height: parent.height
        color: Theme.colors.text
    }
}
