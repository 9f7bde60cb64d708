import QtQuick
import QtQuick.Templates as T
import Tavaro.Theme

T.ScrollBar {
    id: control

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    padding: 3
    visible: policy !== T.ScrollBar.AlwaysOff
    minimumSize: 0.08
    hoverEnabled: true
    Accessible.ignored: true // keys and the wheel scroll; the bar only shows where one is
    contentItem: Rectangle {
        implicitWidth: control.interactive ? 7 : 3
        implicitHeight: control.interactive ? 7 : 3
        radius: 4
        color: control.pressed || control.hovered ? Theme.colors.secondaryText : Theme.colors.strongLine
        visible: control.size < 1
    }
}
