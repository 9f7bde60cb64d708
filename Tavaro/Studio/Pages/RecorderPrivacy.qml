import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Recorder
import Tavaro.Style
import Tavaro.Theme

// Settings: what a take keeps of what is typed.
ColumnLayout {
    id: settings

    required property RecorderModel recorder

    spacing: 10

    RowLayout {
        Layout.fillWidth: true
        Label {
            Layout.fillWidth: true
            text: qsTr("Keys that takes log")
        }
        Segmented {
            name: qsTr("Keys that takes log")
            options: [
                { text: qsTr("All"), value: "all" },
                { text: qsTr("Shortcuts"), value: "shortcuts" },
                { text: qsTr("None"), value: "none" }
            ]
            value: settings.recorder.keys
            onChosen: value => settings.recorder.keys = value
        }
    }
    Label {
        Layout.fillWidth: true
        text: qsTr("By these the film can show keys and speed up long typing. What goes into password fields is left out, wherever Tavaro can tell one.")
        wrapMode: Text.Wrap
        color: Theme.colors.secondaryText
    }
}
