import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Theme

// Some sentences of the transcript, with the word that is spoken, the caret and what is selected of them.
Item {
    id: paragraph

    required property int index
    required property string html
    required property string time
    required property int first
    required property int entries
    property TranscriptModel words: null
    property bool hasFocus: false
    readonly property int last: first + entries - 1
    readonly property int selectedFirst: Math.max(words.selectionFirst, first)
    readonly property int selectedLast: Math.min(words.selectionLast, last)
    readonly property bool isSelected: words.selectionLast >= 0 && selectedFirst <= selectedLast

    function entryAt(x: double, y: double): int {
        const line = Math.max(1, Math.min(y - text.y, text.height - 2)); // beyond is the end of the text
        return words.entryAt(index, text.positionAt(x - text.x, line));
    }
    function placeOf(entry: int): rect {
        const place = text.positionToRectangle(words.positionOf(entry));
        return Qt.rect(text.x + place.x, text.y + place.y, place.width, place.height);
    }
    function showSelection() {
        if (isSelected) text.select(words.positionOf(selectedFirst), words.endOf(selectedLast));
        else text.deselect();
    }

    height: text.y + text.height + 14
    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("At %1").arg(time)
    onHtmlChanged: Qt.callLater(showSelection) // when the text is laid out
    onIsSelectedChanged: showSelection()
    onSelectedFirstChanged: showSelection()
    onSelectedLastChanged: showSelection()

    component Mark: Rectangle {
        id: mark

        property Item words
        property int from
        property int to
        // While words come and go, the text may not have all of them yet.
        readonly property rect begin: words.height > 0 ? words.positionToRectangle(Math.min(from, words.length)) : Qt.rect(0, 0, 0, 0)
        readonly property rect end: words.height > 0 ? words.positionToRectangle(Math.min(to, words.length)) : Qt.rect(0, 0, 0, 0)

        x: words.x + begin.x - 2
        y: words.y + begin.y
        width: (end.y === begin.y ? end.x : words.width) - begin.x + 4
        height: begin.height
        radius: 3
    }

    Label {
        id: moment

        text: paragraph.time
        color: Theme.colors.secondaryText
        font.pixelSize: Theme.captionSize
    }
    Mark {
        words: text
        visible: paragraph.words.spoken >= paragraph.first && paragraph.words.spoken <= paragraph.last
        from: visible ? paragraph.words.positionOf(paragraph.words.spoken) : 0
        to: visible ? paragraph.words.endOf(paragraph.words.spoken) : 0
        color: Theme.colors.selection
    }
    TextEdit {
        id: text

        anchors { left: parent.left; right: parent.right; top: moment.bottom; topMargin: 2 }
        readOnly: true
        activeFocusOnPress: false
        selectByMouse: false
        persistentSelection: true
        wrapMode: TextEdit.Wrap
        textFormat: TextEdit.RichText
        text: paragraph.html
        color: Theme.colors.text
        selectionColor: Theme.colors.accent
        selectedTextColor: Theme.colors.onAccent
        font { family: Theme.face; pixelSize: Theme.bodySize + 1 }
        Accessible.role: Accessible.Paragraph
        Accessible.name: getText(0, length)
    }
    Mark {
        words: text
        visible: paragraph.hasFocus && paragraph.words.caret >= paragraph.first && paragraph.words.caret <= paragraph.last
        from: visible ? paragraph.words.positionOf(paragraph.words.caret) : 0
        to: visible ? paragraph.words.endOf(paragraph.words.caret) : 0
        color: "transparent"
        border { width: 2; color: Theme.colors.focus }
    }
}
