import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Settings
import Tavaro.Style
import Tavaro.Theme

// What is decided of one client.
ColumnLayout {
    id: row

    required property int index
    required property string name
    required property bool isAllowed
    required property bool mayClick

    spacing: 0
    Rectangle {
        Layout.fillWidth: true
        Layout.bottomMargin: 8
        implicitHeight: 1
        color: Theme.colors.line
    }
    RowLayout {
        spacing: 16
        Label {
            Layout.fillWidth: true
            text: row.name
            elide: Text.ElideRight
            font.weight: Font.Medium
        }
        CheckBox {
            text: qsTr("Clicks and types")
            enabled: row.isAllowed
            checked: row.mayClick
            Accessible.name: qsTr("%1 may click and type in other apps").arg(row.name)
            onToggled: { Agents.setClicks(row.index, checked); checked = Qt.binding(() => row.mayClick); }
        }
        Switch {
            text: row.isAllowed ? qsTr("Allowed") : qsTr("Refused")
            checked: row.isAllowed
            Accessible.name: qsTr("%1 may control Tavaro").arg(row.name)
            onToggled: { Agents.setAllowed(row.index, checked); checked = Qt.binding(() => row.isAllowed); }
        }
        ToolButton {
            icon.source: Theme.icon("x-lg")
            icon { width: 12; height: 12 }
            ToolTip.text: qsTr("Forget %1: its next call asks").arg(row.name)
            onClicked: Agents.forget(row.index)
        }
    }
}
