import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Style
import Tavaro.Theme

// How fast a range or clips play: any factor.
Dialog {
    id: dialog

    property EditorSession session: null
    property double before: 1
    property double seconds: 0
    readonly property double factor: Number(field.text.replace(",", ".").replace("×", ""))
    readonly property bool isPossible: factor >= 0.25 && factor <= 16

    function ask() {
        before = session.speed();
        seconds = session.speedSeconds();
        field.text = Number(before.toFixed(3));
        open();
        field.selectAll();
    }

    title: qsTr("Change speed")
    width: Math.min(420, parent ? parent.width - 32 : 420)
    onOpened: field.forceActiveFocus()
    onAccepted: session.setSpeed(factor)

    contentItem: ColumnLayout {
        spacing: 12
        Flow {
            Layout.fillWidth: true
            Layout.topMargin: 8
            spacing: 6
            Repeater {
                model: [0.25, 0.5, 1, 1.5, 2, 4, 8, 16]
                Button {
                    required property double modelData

                    text: qsTr("%1×").arg(modelData)
                    checked: dialog.factor === modelData
                    onClicked: field.text = modelData
                }
            }
        }
        RowLayout {
            spacing: 8
            TextField {
                id: field

                Layout.preferredWidth: 96
                implicitWidth: 96
                inputMethodHints: Qt.ImhFormattedNumbersOnly
                Accessible.name: qsTr("Times as fast")
                onAccepted: if (dialog.isPossible) dialog.accept()
            }
            Label { text: qsTr("times as fast, from 0.25 to 16") }
        }
        Label {
            Layout.fillWidth: true
            wrapMode: Text.Wrap
            color: dialog.isPossible ? Theme.colors.secondaryText : Theme.colors.warning
            text: dialog.isPossible ? qsTr("%1 s become %2 s. Sound keeps its pitch.").arg(dialog.seconds.toFixed(1)).arg((dialog.seconds * dialog.before / dialog.factor).toFixed(1)) : qsTr("The speed has to be a number from 0.25 to 16.")
        }
    }
    footer: DialogButtonBox {
        Button {
            text: qsTr("Cancel")
            DialogButtonBox.buttonRole: DialogButtonBox.RejectRole
        }
        Button {
            text: qsTr("Change speed")
            highlighted: true
            enabled: dialog.isPossible
            DialogButtonBox.buttonRole: DialogButtonBox.AcceptRole
        }
    }
}
