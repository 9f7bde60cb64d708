import QtQuick
import QtQuick.Templates as T
import Tavaro.Theme

// Without a known end it is half filled, and moves nothing.
T.ProgressBar {
    id: control

    implicitWidth: 160
    implicitHeight: 4
    contentItem: Item {
        Rectangle {
            width: control.indeterminate ? parent.width / 2 : control.visualPosition * parent.width
            height: parent.height
            radius: 2
            color: Theme.colors.accent
        }
    }
    background: Rectangle {
        radius: 2
        color: Theme.colors.strongLine
    }
}
