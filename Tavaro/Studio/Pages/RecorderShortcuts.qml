import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Recorder
import Tavaro.Style
import Tavaro.Theme

// Settings: the shortcuts that work the recorder from anywhere.
GridLayout {
    id: settings

    required property RecorderKeys keys

    columns: 2
    columnSpacing: 16
    rowSpacing: 10

    component Key: TextField {
        Layout.preferredWidth: 180
        placeholderText: qsTr("none")
        enabled: settings.keys.areGiven
    }

    Label { Layout.fillWidth: true; text: qsTr("Begin and end a take") }
    Key {
        text: settings.keys.toggleKey
        onEditingFinished: settings.keys.toggleKey = text
        Accessible.name: qsTr("Shortcut that begins and ends a take")
    }
    Label { Layout.fillWidth: true; text: qsTr("Pause and go on") }
    Key {
        text: settings.keys.pauseKey
        onEditingFinished: settings.keys.pauseKey = text
        Accessible.name: qsTr("Shortcut that pauses a take and lets it go on")
    }
    Label {
        Layout.columnSpan: 2
        Layout.fillWidth: true
        text: !settings.keys.areGiven
              ? qsTr("This desktop gives programs no shortcuts. Give it one in its own settings that runs: tavaro record --toggle")
              : settings.keys.problem.length > 0 ? settings.keys.problem : qsTr("Written like ctrl+alt+r, or F9.")
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        color: settings.keys.problem.length > 0 ? Theme.colors.warning : Theme.colors.secondaryText
    }
}
