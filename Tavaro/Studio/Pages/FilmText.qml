import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Theme

// A text of the film, edited where it is shown.
Rectangle {
    id: box

    required property FilmHandles handles
    readonly property rect place: handles.editedPlace

    function begin() {
        field.text = handles.editedText;
        field.forceActiveFocus();
        field.selectAll();
    }
    function end() {
        handles.setText(field.text);
        handles.forceActiveFocus();
    }

    width: Math.max(220, Math.min(place.width, handles.width))
    height: Math.min(Math.max(Theme.controlHeight, field.implicitHeight), handles.height)
    x: Math.max(0, Math.min(place.x + place.width / 2 - width / 2, handles.width - width))
    y: Math.max(0, Math.min(place.y + place.height / 2 - height / 2, handles.height - height))
    visible: place.width > 0
    radius: Theme.radius
    color: Theme.colors.raised
    border { width: 2; color: Theme.colors.focus }

    TextEdit {
        id: field

        anchors.fill: parent
        padding: 7
        clip: true
        font { family: Theme.face; pixelSize: Theme.bodySize + 2 }
        color: Theme.colors.text
        selectionColor: Theme.colors.accent
        selectedTextColor: Theme.colors.onAccent
        textFormat: TextEdit.PlainText
        wrapMode: TextEdit.Wrap
        selectByMouse: true
        Accessible.role: Accessible.EditableText
        Accessible.name: qsTr("Text on the film")
        Accessible.description: qsTr("Enter keeps it, Escape leaves it as it was")
        onActiveFocusChanged: if (!activeFocus && box.visible) box.handles.setText(text)
        Keys.onEscapePressed: { box.handles.leaveText(); box.handles.forceActiveFocus() }
        // Shift+Enter begins a new line.
        Keys.onPressed: event => {
            if (event.key !== Qt.Key_Return && event.key !== Qt.Key_Enter || event.modifiers & Qt.ShiftModifier) return;
            event.accepted = true;
            box.end();
        }
    }
}
