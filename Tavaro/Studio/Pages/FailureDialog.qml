import QtQuick
import QtQuick.Controls
import Tavaro.Style
import Tavaro.Theme

// What went wrong, as a sentence; several at once are read together.
Dialog {
    id: dialog

    readonly property int most: 4 // that fit into the window
    property var sentences: []

    function tell(text: string) {
        sentences = visible ? sentences.concat(text) : [text];
        open();
    }

    title: qsTr("That did not work")
    width: Math.min(480, parent ? parent.width - 32 : 480)
    contentItem: Label {
        text: dialog.sentences.slice(0, dialog.most).join("\n\n")
              + (dialog.sentences.length > dialog.most ? qsTr("\n\n… and %1 more like these.").arg(dialog.sentences.length - dialog.most) : "")
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
