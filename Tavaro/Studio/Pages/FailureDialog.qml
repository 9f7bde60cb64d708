import QtQuick
import QtQuick.Controls
import Tavaro.Style
import Tavaro.Theme

// What went wrong, as a sentence; several at once are read together.
Dialog {
    id: dialog

    property string sentence

    function tell(text: string) {
        sentence = opened ? sentence + "\n\n" + text : text;
        open();
    }

    title: qsTr("That did not work")
    width: Math.min(480, parent ? parent.width - 32 : 480)
    contentItem: Label {
        text: dialog.sentence
        wrapMode: Text.Wrap
        lineHeight: 1.2
    }
    footer: DialogButtonBox {
        Button {
            text: qsTr("OK")
            highlighted: true
            focus: true
            DialogButtonBox.buttonRole: DialogButtonBox.AcceptRole
        }
    }
}
