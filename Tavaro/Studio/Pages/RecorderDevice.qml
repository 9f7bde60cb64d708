import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Style
import Tavaro.Theme

// A switch with what it opens, and what is to be seen of that while it is on.
ColumnLayout {
    id: device

    property string name
    property alias on: control.checked
    property var entries: []
    property string chosen
    property string warning
    default property alias content: below.data

    signal switched(bool isOn)
    signal picked(string id)

    spacing: 6

    RowLayout {
        Layout.fillWidth: true

        Label { text: device.name; font.weight: Font.Medium; Layout.fillWidth: true }
        Switch {
            id: control
            onClicked: device.switched(checked)
            Accessible.name: device.name
        }
    }
    ComboBox {
        Layout.fillWidth: true
        visible: control.checked && device.entries.length > 1
        model: device.entries
        textRole: "name"
        valueRole: "id"
        currentIndex: device.entries.findIndex(entry => entry.id === device.chosen)
        onActivated: device.picked(currentValue)
        Accessible.name: qsTr("Which %1").arg(device.name)
    }
    ColumnLayout {
        id: below
        Layout.fillWidth: true
        visible: control.checked
        spacing: 6
    }
    Label {
        Layout.fillWidth: true
        visible: control.checked && device.warning.length > 0
        text: device.warning
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        color: Theme.colors.warning
        font.pixelSize: Theme.captionSize
    }
}
