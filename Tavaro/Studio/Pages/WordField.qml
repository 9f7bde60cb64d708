import QtQuick
import QtQuick.Controls
import Tavaro.Editor

// Over a word of the transcript, to write it otherwise.
Popup {
    id: popup

    required property TranscriptModel words
    property int entry: -1

    function correct(entry: int, paragraph: Item) {
        const place = paragraph.placeOf(entry);
        popup.entry = entry;
        parent = paragraph;
        x = place.x - 16;
        y = place.y - 10;
        field.text = words.textOf(entry);
        open();
        field.selectAll();
    }

    padding: 4
    focus: true
    onOpened: field.forceActiveFocus()

    Connections {
        target: popup.words
        function onTextChanged() { popup.close() } // the entry may be another word's now
    }
    TextField {
        id: field

        Accessible.name: qsTr("The word as it is written")
        onAccepted: {
            popup.words.correct(popup.entry, text);
            popup.close();
        }
    }
}
