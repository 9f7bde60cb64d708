import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Style
import Tavaro.Theme

// Finds words in the transcript: Return goes to the next, with Shift to the one before.
RowLayout {
    id: search

    required property TranscriptModel words
    signal found

    function seek(by: int) {
        if (words.seek(by)) found();
    }

    spacing: 2
    SearchField {
        Layout.fillWidth: true
        placeholderText: qsTr("Search the transcript")
        onTextChanged: search.words.sought = text
        Component.onCompleted: text = search.words.sought
        Keys.onReturnPressed: event => search.seek(event.modifiers & Qt.ShiftModifier ? -1 : 1)
        Keys.onEnterPressed: search.seek(1)
    }
    Label {
        visible: search.words.sought !== ""
        text: search.words.matches === 0 ? qsTr("none") : search.words.match < 0 ? search.words.matches : qsTr("%1 of %2").arg(search.words.match + 1).arg(search.words.matches)
        color: Theme.colors.secondaryText
        font.pixelSize: Theme.captionSize
        Accessible.name: qsTr("Found: %1").arg(text)
    }
    ToolButton {
        visible: search.words.sought !== ""
        enabled: search.words.matches > 0
        icon.source: Theme.icon("chevron-up")
        ToolTip.text: qsTr("Previous match (Shift+Return)")
        onClicked: search.seek(-1)
    }
    ToolButton {
        visible: search.words.sought !== ""
        enabled: search.words.matches > 0
        icon.source: Theme.icon("chevron-down")
        ToolTip.text: qsTr("Next match (Return)")
        onClicked: search.seek(1)
    }
}
