import QtQuick
import Tavaro.Theme

// Around whatever has the keyboard, where the user works by keyboard.
Rectangle {
    required property Item control

    anchors.fill: parent
    anchors.margins: -3
    radius: (parent.radius ?? Theme.radius) + 3
    visible: control.visualFocus ?? control.activeFocus
    color: "transparent"
    border { width: 2; color: Theme.colors.focus }
}
