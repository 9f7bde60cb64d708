import QtQuick
import QtQuick.Controls
import Tavaro.Style
import Tavaro.Theme

// One of several shapes, with its picture.
RadioButton {
    id: button

    required property size shape
    readonly property real longer: Math.max(shape.width, shape.height)

    implicitWidth: 84
    implicitHeight: 66
    focusPolicy: Qt.StrongFocus
    Accessible.name: qsTr("%1, %2 × %3").arg(text).arg(shape.width).arg(shape.height)
    Keys.onReturnPressed: Reach.press(button)
    Keys.onEnterPressed: Reach.press(button)

    indicator: null
    contentItem: Item {
        Rectangle {
            anchors { horizontalCenter: parent.horizontalCenter; top: parent.top; topMargin: 4 + (30 - height) / 2 }
            width: Math.round(30 * button.shape.width / button.longer)
            height: Math.round(30 * button.shape.height / button.longer)
            radius: 2
            color: "transparent"
            border { width: 2; color: button.checked ? Theme.colors.accentText : Theme.colors.secondaryText }
        }
        Label {
            anchors { horizontalCenter: parent.horizontalCenter; bottom: parent.bottom; bottomMargin: 2 }
            text: button.text
            font.pixelSize: Theme.captionSize
            Accessible.ignored: true
        }
    }
    background: Rectangle {
        radius: Theme.radius
        color: button.checked ? Theme.colors.selection : button.hovered ? Theme.colors.hover : Theme.colors.sunken
        FocusRing { control: button }
    }
}
