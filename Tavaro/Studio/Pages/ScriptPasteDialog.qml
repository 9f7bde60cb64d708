import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Style
import Tavaro.Theme
import Tavaro.Voice

// The whole script as one text.
Dialog {
    id: dialog

    required property ScriptLines script

    function ask() {
        text.text = script.script || script.clipboardText();
        open();
        text.forceActiveFocus();
    }

    title: qsTr("The whole script")
    width: Math.min(560, parent ? parent.width - 32 : 560)
    focus: true
    onAccepted: script.paste(text.text)

    contentItem: ColumnLayout {
        spacing: 8
        Label {
            Layout.fillWidth: true
            Layout.topMargin: 8
            text: qsTr("One line for each sentence. A time before it, such as 0:03.5, pins it to that moment. Lines whose text stays keep their sound.")
            wrapMode: Text.Wrap
            color: Theme.colors.secondaryText
        }
        ScrollView {
            Layout.fillWidth: true
            Layout.preferredHeight: 240
            TextArea {
                id: text

                wrapMode: TextEdit.Wrap
                placeholderText: qsTr("Script")
                Keys.onTabPressed: nextItemInFocusChain().forceActiveFocus(Qt.TabFocusReason)
                Keys.onBacktabPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
            }
        }
    }
    footer: DialogButtonBox {
        Button {
            text: qsTr("Cancel")
            DialogButtonBox.buttonRole: DialogButtonBox.RejectRole
        }
        Button {
            text: qsTr("Use this script")
            highlighted: true
            enabled: text.text.trim() !== ""
            DialogButtonBox.buttonRole: DialogButtonBox.AcceptRole
        }
    }
}
