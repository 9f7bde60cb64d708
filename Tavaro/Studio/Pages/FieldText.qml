import QtQuick
import QtQuick.Controls
import Tavaro.Theme

// A text of one line or several. What is being typed stays, whatever changes meanwhile.
TextArea {
    id: area

    required property var field
    readonly property string shown: field.isMixed ? "" : field.value ?? ""

    property bool isTyped: false

    function restore() { text = shown }
    function finish() {
        if (text !== shown) field.give(text === "" && field.isOptional ? undefined : text);
        restore();
    }

    onShownChanged: if (!isTyped) restore()
    onTextChanged: isTyped = text !== shown
    placeholderText: field.isMixed ? qsTr("Mixed") : ""
    wrapMode: TextEdit.Wrap
    Accessible.name: field.label
    onActiveFocusChanged: if (!activeFocus) finish()
    Keys.onEscapePressed: restore()
    Keys.onReturnPressed: event => {
        event.accepted = !(event.modifiers & Qt.ShiftModifier);
        if (event.accepted) finish();
    }
    Keys.onTabPressed: nextItemInFocusChain().forceActiveFocus(Qt.TabFocusReason)
    Keys.onBacktabPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)

    Connections {
        target: area.field
        function onRestored() { area.restore() }
    }
}
