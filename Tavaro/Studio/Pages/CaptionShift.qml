import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Theme

// Moves all captions by some seconds, earlier or later.
RowLayout {
    id: shift

    required property CaptionEditor captions
    readonly property double seconds: Number(field.text.replace(",", "."))

    spacing: 6
    Label {
        Layout.fillWidth: true
        text: qsTr("Shift all by")
        color: Theme.colors.secondaryText
        elide: Text.ElideRight
    }
    TextField {
        id: field

        Layout.preferredWidth: 64
        implicitWidth: 64
        text: "0.5"
        horizontalAlignment: TextInput.AlignRight
        Accessible.name: qsTr("Seconds by which all captions are shifted")
    }
    Label { text: qsTr("s"); color: Theme.colors.secondaryText }
    ToolButton {
        enabled: shift.seconds > 0
        icon.source: Theme.icon("chevron-left")
        ToolTip.text: qsTr("Earlier")
        onClicked: shift.captions.shift(-shift.seconds)
    }
    ToolButton {
        enabled: shift.seconds > 0
        icon.source: Theme.icon("chevron-right")
        ToolTip.text: qsTr("Later")
        onClicked: shift.captions.shift(shift.seconds)
    }
}
