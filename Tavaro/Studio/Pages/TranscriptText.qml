import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Theme

// The paragraphs of the transcript. A click or the arrow keys lead the playhead along; with Shift they select.
ListView {
    id: list

    required property EditorDesk desk
    readonly property EditorSession session: desk.session
    readonly property TranscriptModel words: session.transcript
    readonly property var ownKeys: [Qt.Key_Left, Qt.Key_Right, Qt.Key_Up, Qt.Key_Down, Qt.Key_Delete, Qt.Key_Backspace, Qt.Key_F2, Qt.Key_Escape]

    // In points of the list as it is seen.
    function entryAt(x: double, y: double): int {
        const item = itemAt(width / 2, y + contentY);
        return item ? item.entryAt(x - item.x, y + contentY - item.y) : -1;
    }
    function paragraph(entry: int): Item { return itemAtIndex(words.paragraphOf(entry)) }
    function show(entry: int) {
        positionViewAtIndex(words.paragraphOf(entry), ListView.Contain);
        const top = paragraph(entry) ? paragraph(entry).y + paragraph(entry).placeOf(entry).y : contentY;
        contentY = Math.max(Math.min(contentY, top - 8), top + 36 - height);
    }
    function go(entry: int) {
        words.place(entry);
        session.playhead = words.timeOf(entry);
    }
    function reach(entry: int, modifiers: int) {
        if (modifiers & Qt.ShiftModifier) words.selectTo(entry);
        else go(Math.max(0, Math.min(entry, words.entryCount - 1)));
        show(words.caret);
    }
    // The entry in the line above or below the caret's.
    function nextLine(by: int): int {
        const from = paragraph(words.caret), place = from?.placeOf(words.caret) ?? Qt.rect(0, 0, 0, 0);
        const y = (from?.y ?? 0) - contentY + place.y + place.height / 2;
        const around = [1, 2, 3].map(lines => entryAt(place.x + 2, y + by * lines * place.height));
        return around.find(entry => from && entry >= 0 && entry !== words.caret) ?? words.caret + by;
    }
    function correct(entry: int) {
        if (entry >= 0 && words.isCorrectable(entry)) field.correct(entry, paragraph(entry));
    }
    function showMenu() {
        const place = paragraph(words.caret)?.placeOf(words.caret) ?? Qt.rect(0, 0, 0, 0);
        menu.popup(paragraph(words.caret) ?? list, place.x, place.y + place.height);
    }
    function press(key: int, modifiers: int): bool {
        const steps = { [Qt.Key_Left]: () => words.caret - 1, [Qt.Key_Right]: () => words.caret + 1, [Qt.Key_Up]: () => nextLine(-1), [Qt.Key_Down]: () => nextLine(1) };
        const acts = { [Qt.Key_Delete]: () => words.deleteSelected(), [Qt.Key_Backspace]: () => words.deleteSelected(), [Qt.Key_F2]: () => correct(words.caret), [Qt.Key_Escape]: () => words.place(words.caret), [Qt.Key_Menu]: () => showMenu() };
        if (steps[key]) reach(steps[key](), modifiers);
        else if (acts[key]) acts[key]();
        return key in steps || key in acts;
    }

    model: words
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    activeFocusOnTab: true
    keyNavigationEnabled: false
    Accessible.role: Accessible.List
    Accessible.name: qsTr("Transcript")
    onActiveFocusChanged: if (activeFocus && words.caret < 0) words.place(Math.max(0, words.spoken))
    ScrollBar.vertical: ScrollBar {}

    delegate: TranscriptParagraph {
        width: list.width - 14
        words: list.words
        hasFocus: list.activeFocus
    }

    Keys.onShortcutOverride: event => event.accepted = ownKeys.includes(event.key) || event.matches(StandardKey.SelectAll) || event.matches(StandardKey.Copy)
    Keys.onPressed: event => {
        if (event.matches(StandardKey.SelectAll)) words.selectAll();
        else if (event.matches(StandardKey.Copy)) words.copy();
        else event.accepted = press(event.key, event.modifiers);
    }

    Connections {
        target: list.words
        function onSpokenChanged() { if (list.desk.preview.playback.playing) list.show(list.words.spoken) }
    }
    MouseArea {
        parent: list
        anchors { fill: parent; rightMargin: 14 }
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        cursorShape: Qt.IBeamCursor
        preventStealing: true
        onPressed: mouse => {
            const entry = list.entryAt(mouse.x, mouse.y);
            const isInside = entry >= list.words.selectionFirst && entry <= list.words.selectionLast;
            list.forceActiveFocus();
            if (entry >= 0 && !(mouse.button === Qt.RightButton && isInside)) list.reach(entry, mouse.modifiers);
            if (mouse.button === Qt.RightButton) menu.popup();
        }
        onPositionChanged: mouse => {
            const entry = list.entryAt(mouse.x, mouse.y);
            if (mouse.buttons & Qt.LeftButton && entry >= 0 && entry !== list.words.caret) list.words.selectTo(entry);
        }
        onDoubleClicked: mouse => list.correct(list.entryAt(mouse.x, mouse.y))
    }
    Menu {
        id: menu

        MenuItem { text: qsTr("Cut from film"); icon.source: Theme.icon("scissors"); enabled: list.words.canDelete; onTriggered: list.words.deleteSelected() }
        MenuItem { text: qsTr("Restore"); icon.source: Theme.icon("arrow-counterclockwise"); enabled: list.words.canRestore; onTriggered: list.words.restoreSelected() }
        MenuItem { text: qsTr("Correct…"); icon.source: Theme.icon("pencil"); enabled: list.words.isCorrectable(list.words.caret); onTriggered: list.correct(list.words.caret) }
        MenuSeparator {}
        MenuItem { text: qsTr("Copy text"); icon.source: Theme.icon("clipboard"); onTriggered: list.words.copy() }
    }
    WordField { id: field; words: list.words }
}
