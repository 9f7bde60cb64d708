import QtQuick
import QtQuick.Controls
import Tavaro.Theme

// The text of a caption, over as many lines as it takes. Return keeps what was written, Escape does not.
Rectangle {
    id: field

    property string text
    readonly property alias cursorPosition: edit.cursorPosition
    readonly property alias length: edit.length
    property alias name: edit.name
    signal focused
    signal written(string text)
    signal split(int position)

    function reset() { edit.text = Qt.binding(() => field.text) }
    function end() {
        const text = edit.text, position = edit.cursorPosition;
        if (text !== field.text) written(text);
        reset();
        edit.cursorPosition = Math.min(position, edit.length);
    }

    implicitHeight: edit.implicitHeight + 14
    radius: Theme.radius
    color: Theme.colors.sunken
    border { width: edit.activeFocus ? 2 : 1; color: edit.activeFocus ? Theme.colors.focus : Theme.colors.line }

    TextEdit {
        id: edit

        property string name

        anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter; margins: 8 }
        textFormat: TextEdit.PlainText
        wrapMode: TextEdit.Wrap
        selectByMouse: true
        activeFocusOnTab: true
        color: Theme.colors.text
        selectionColor: Theme.colors.accent
        selectedTextColor: Theme.colors.onAccent
        font { family: Theme.face; pixelSize: Theme.bodySize }
        Accessible.role: Accessible.EditableText
        Accessible.name: name
        onActiveFocusChanged: activeFocus ? field.focused() : field.end()
        Component.onCompleted: field.reset()
        Keys.onPressed: event => {
            const isReturn = (event.key === Qt.Key_Return || event.key === Qt.Key_Enter) && !(event.modifiers & Qt.ShiftModifier);
            if (isReturn) field.end();
            if (isReturn && event.modifiers & Qt.ControlModifier) field.split(cursorPosition);
            if (event.key === Qt.Key_Escape) field.reset();
            event.accepted = isReturn || event.key === Qt.Key_Escape;
        }
        Keys.onTabPressed: nextItemInFocusChain().forceActiveFocus(Qt.TabFocusReason)
        Keys.onBacktabPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
    }
}
