import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Theme

// Plays the film; and the commands that are wanted most.
Rectangle {
    id: bar

    property EditorDesk desk: null
    readonly property FilmPlayback playback: desk?.preview.playback ?? null
    readonly property EditorSession session: desk?.session ?? null

    implicitHeight: 48
    color: Theme.colors.surface
    Accessible.role: Accessible.ToolBar
    Accessible.name: qsTr("Playing and editing")

    RowLayout {
        anchors { fill: parent; leftMargin: 12; rightMargin: 12 }
        spacing: 2

        EditorButton { session: bar.session; name: "split"; picture: "scissors" }
        EditorButton { session: bar.session; name: "delete"; picture: "trash" }
        EditorButton { session: bar.session; name: "addZoom"; picture: "zoom-in" }
        EditorButton { session: bar.session; name: "addTitle"; picture: "textarea-t" }
        EditorButton { session: bar.session; name: "addCaption"; picture: "badge-cc" }
        EditorButton { session: bar.session; name: "addRedaction"; picture: "eye-slash" }
        Item { Layout.fillWidth: true }
        EditorButton { session: bar.session; name: "toStart"; picture: "skip-start-fill" }
        ToolButton {
            readonly property bool isPlaying: bar.playback?.playing ?? false

            enabled: (bar.playback?.duration ?? 0) > 0
            icon.source: Theme.icon(isPlaying ? "pause-fill" : "play-fill")
            ToolTip.text: isPlaying ? qsTr("Pause (Space)") : qsTr("Play (Space)")
            onClicked: bar.playback.toggle()
        }
        EditorButton { session: bar.session; name: "toEnd"; picture: "skip-end-fill" }
        Label {
            Layout.leftMargin: 8
            Layout.minimumWidth: 88 // so that nothing moves while it counts
            text: bar.desk?.time ?? ""
            Accessible.name: qsTr("Time %1").arg(text)
        }
        Item { Layout.fillWidth: true }
        Label {
            Layout.maximumWidth: 260
            visible: text !== ""
            text: bar.playback?.noSound ?? ""
            textFormat: Text.PlainText
            elide: Text.ElideRight
            color: Theme.colors.secondaryText
            font.pixelSize: Theme.captionSize
        }
        PlayingOptions { desk: bar.desk }
    }
}
