import QtQuick
import QtQuick.Controls
import Tavaro.Theme

TextField {
    id: control

    leftPadding: 32
    rightPadding: 32
    Accessible.role: Accessible.EditableText
    Keys.onEscapePressed: event => { event.accepted = length > 0; clear(); }

    Icon {
        icon: "search"
        x: 10
        anchors.verticalCenter: parent.verticalCenter
    }
    ToolButton {
        width: 24
        height: 24
        padding: 4
        anchors { right: parent.right; rightMargin: 4; verticalCenter: parent.verticalCenter }
        visible: control.length > 0
        icon.source: Theme.icon("x-lg")
        icon { width: 10; height: 10 }
        ToolTip.text: qsTr("Clear the search")
        onClicked: control.clear()
    }
}
