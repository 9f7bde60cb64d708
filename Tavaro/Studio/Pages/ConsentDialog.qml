import QtQuick
import QtQuick.Controls
import Tavaro.Settings
import Tavaro.Style
import Tavaro.Theme

// Whether a client may control Tavaro. Nothing that was typed for something else answers it: neither button has the
// keyboard when it comes.
Dialog {
    id: dialog

    readonly property bool isAsking: Consent.isAsking

    title: Consent.title
    width: Math.min(480, parent ? parent.width - 32 : 480)
    closePolicy: Popup.CloseOnEscape
    onIsAskingChanged: isAsking ? open() : close()
    onRejected: Consent.dismiss()
    Component.onCompleted: if (isAsking) open()

    contentItem: Label {
        text: Consent.text
        wrapMode: Text.Wrap
        lineHeight: 1.2
        focus: true
        Accessible.role: Accessible.StaticText
    }
    footer: DialogButtonBox {
        Button {
            text: qsTr("Deny")
            DialogButtonBox.buttonRole: DialogButtonBox.DestructiveRole
            onClicked: Consent.deny()
        }
        Button {
            text: qsTr("Allow")
            highlighted: true
            DialogButtonBox.buttonRole: DialogButtonBox.ApplyRole
            onClicked: Consent.allow()
        }
    }
}
