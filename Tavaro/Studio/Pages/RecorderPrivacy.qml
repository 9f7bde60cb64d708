import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Recorder
import Tavaro.Style
import Tavaro.Theme

// Settings: what a take keeps of what is typed, and whether it is searched for private text.
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
    RowLayout {
        Layout.fillWidth: true
        Layout.topMargin: 6
        Label {
            Layout.fillWidth: true
            text: qsTr("Hide private text in each new take")
            wrapMode: Text.Wrap
        }
        Switch {
            checked: settings.recorder.scansTakes
            Accessible.name: qsTr("Hide private text in each new take")
            onToggled: {
                settings.recorder.scansTakes = checked;
                checked = Qt.binding(() => settings.recorder.scansTakes);
            }
        }
    }
    Label {
        Layout.fillWidth: true
        text: qsTr("A take is read once it is in the editor, and what looks private is covered. Look through it before you share the film: not everything can be found.")
        wrapMode: Text.Wrap
        color: Theme.colors.secondaryText
    }
}
