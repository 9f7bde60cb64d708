import QtQuick
import QtQuick.Templates as T
import Tavaro.Theme

T.TextField {
    id: control

    implicitWidth: Math.max(180, contentWidth + leftPadding + rightPadding)
    implicitHeight: Theme.controlHeight
    leftPadding: 10
    rightPadding: 10
    verticalAlignment: TextInput.AlignVCenter
    color: enabled ? Theme.colors.text : Theme.colors.disabledText
    placeholderTextColor: Theme.colors.secondaryText
    selectionColor: Theme.colors.accent
    selectedTextColor: Theme.colors.onAccent
    selectByMouse: true
    hoverEnabled: true
    Accessible.name: placeholderText
    Accessible.description: enabled ? "" : qsTr("Not available now")

    Text {
        anchors.fill: parent
        anchors { leftMargin: control.leftPadding; rightMargin: control.rightPadding }
        visible: !control.length && !control.preeditText
        text: control.placeholderText
        font: control.font
        color: control.placeholderTextColor
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        Accessible.ignored: true
    }
    background: Rectangle {
        radius: Theme.radius
        color: Theme.colors.sunken
        border { width: control.activeFocus ? 2 : 1; color: control.activeFocus ? Theme.colors.focus : control.hovered ? Theme.colors.strongLine : Theme.colors.line }
    }
}
