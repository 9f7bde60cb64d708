import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Style
import Tavaro.Theme
import Tavaro.Voice

// What a script is drafted for, and of what.
Dialog {
    id: dialog

    required property ScriptLines script
    property bool replaces: false
    readonly property var styles: script.styles()

    function ask() {
        open();
        product.forceActiveFocus();
    }

    title: qsTr("Draft a script")
    width: Math.min(420, parent ? parent.width - 32 : 420)
    focus: true
    onAccepted: script.draft(styles[style.currentIndex].name, product.text)

    contentItem: ColumnLayout {
        spacing: 8
        Label {
            Layout.topMargin: 8
            text: qsTr("What it is for")
            Accessible.ignored: true
        }
        ComboBox {
            id: style

            Layout.fillWidth: true
            model: dialog.styles
            textRole: "title"
            Accessible.name: qsTr("What it is for")
        }
        Label {
            Layout.fillWidth: true
            text: dialog.styles[style.currentIndex]?.detail ?? ""
            wrapMode: Text.Wrap
            color: Theme.colors.secondaryText
            font.pixelSize: Theme.captionSize
        }
        Label {
            Layout.topMargin: 4
            text: qsTr("What is shown")
            Accessible.ignored: true
        }
        TextField {
            id: product

            Layout.fillWidth: true
            placeholderText: qsTr("Name of the product")
            onAccepted: dialog.accept()
        }
        Label {
            Layout.fillWidth: true
            text: qsTr("Without a name it is the application that the film shows.") + (dialog.replaces ? " " + qsTr("The present script is replaced; lines whose text stays keep their sound.") : "")
            wrapMode: Text.Wrap
            color: Theme.colors.secondaryText
            font.pixelSize: Theme.captionSize
        }
    }
    footer: DialogButtonBox {
        Button {
            text: qsTr("Cancel")
            DialogButtonBox.buttonRole: DialogButtonBox.RejectRole
        }
        Button {
            text: qsTr("Draft")
            highlighted: true
            DialogButtonBox.buttonRole: DialogButtonBox.AcceptRole
        }
    }
}
