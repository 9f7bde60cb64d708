import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Theme

// How the film is played: over and over, how loud, how fast.
Row {
    id: options

    property EditorDesk desk: null
    readonly property FilmPlayback playback: desk?.preview.playback ?? null

    spacing: 2

    ToolButton {
        icon.source: Theme.icon("arrow-repeat")
        checked: options.desk?.loops ?? false
        enabled: options.desk !== null
        ToolTip.text: qsTr("Play the marked span over and over")
        onClicked: options.desk.loops = !options.desk.loops
        Accessible.checkable: true
        Accessible.checked: checked
    }
    ToolButton {
        id: sound

        icon.source: Theme.icon(options.playback?.muted ? "volume-mute" : "volume-up")
        enabled: options.playback !== null
        ToolTip.text: qsTr("Volume")
        onClicked: volume.open()

        Popup {
            id: volume

            y: -height - 4
            x: (sound.width - width) / 2
            focus: true
            Column {
                spacing: 4
                Slider {
                    value: options.playback?.volume ?? 1
                    enabled: !(options.playback?.muted ?? false)
                    onMoved: options.playback.volume = value
                    Accessible.name: qsTr("Volume")
                }
                Switch {
                    text: qsTr("Mute")
                    checked: options.playback?.muted ?? false
                    onToggled: {
                        options.playback.muted = checked;
                        checked = Qt.binding(() => options.playback?.muted ?? false);
                    }
                }
                Switch {
                    text: qsTr("Sound while scrubbing")
                    checked: options.playback?.scrubsAloud ?? true
                    onToggled: {
                        options.playback.scrubsAloud = checked;
                        checked = Qt.binding(() => options.playback?.scrubsAloud ?? true);
                    }
                }
            }
        }
    }
    ComboBox {
        readonly property var speeds: [0.5, 1, 1.5, 2]

        width: 84
        model: speeds.map(speed => qsTr("%1×").arg(speed))
        currentIndex: speeds.indexOf(options.playback?.speed ?? 1)
        onActivated: index => options.playback.speed = speeds[index]
        Accessible.name: qsTr("Speed of playing")
    }
}
