import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Style
import Tavaro.Theme

// A colour, and what it is changed with. What happens while that is open is one step, from `begun` to `ended`.
AbstractButton {
    id: button

    required property string name
    required property EditorSession session
    property color value
    property bool isMixed: false
    signal begun
    signal ended
    signal given(color color)

    implicitWidth: 44
    implicitHeight: 26
    hoverEnabled: true
    focusPolicy: Qt.StrongFocus
    Accessible.role: Accessible.Button
    Accessible.name: qsTr("%1: %2").arg(name).arg(isMixed ? qsTr("mixed") : String(value))
    Accessible.onPressAction: Reach.press(button)
    Keys.onReturnPressed: Reach.press(button)
    onClicked: popup.open()
    Component.onDestruction: if (popup.opened) ended()

    background: Rectangle {
        radius: Theme.radius
        color: Theme.colors.raised
        border { width: 1; color: button.hovered ? Theme.colors.secondaryText : Theme.colors.strongLine }
        FocusRing { control: button }
    }
    contentItem: Item {
        // White and black behind what can be seen through.
        Row {
            anchors { fill: parent; margins: 4 }
            Rectangle { width: parent.width / 2; height: parent.height; color: "white" }
            Rectangle { width: parent.width / 2; height: parent.height; color: "black" }
        }
        Rectangle {
            anchors { fill: parent; margins: 4 }
            color: button.isMixed ? Theme.colors.sunken : button.value
        }
        Label {
            anchors.centerIn: parent
            visible: button.isMixed
            text: "–"
            Accessible.ignored: true
        }
    }
    ColorPopup {
        id: popup

        x: button.width - width
        y: button.height + 4
        name: button.name
        session: button.session
        value: button.value
        onOpened: button.begun()
        onClosed: button.ended()
        onGiven: color => button.given(color)
    }
}
