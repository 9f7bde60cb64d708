import QtQuick
import QtQuick.Templates as T
import Tavaro.Theme

T.TextArea {
    id: control

    implicitWidth: Math.max(180, contentWidth + leftPadding + rightPadding)
    implicitHeight: Math.max(Theme.controlHeight, contentHeight + topPadding + bottomPadding)
    leftPadding: 10
    rightPadding: 10
    topPadding: 7
    bottomPadding: 7
    textFormat: TextEdit.PlainText
    color: enabled ? Theme.colors.text : Theme.colors.disabledText
    placeholderTextColor: Theme.colors.secondaryText
    selectionColor: Theme.colors.accent
    selectedTextColor: Theme.colors.onAccent
    selectByMouse: true
    hoverEnabled: true
    Accessible.name: placeholderText

    Text {
        x: control.leftPadding
        y: control.topPadding
        visible: !control.length && !control.preeditText
        text: control.placeholderText
        font: control.font
        color: control.placeholderTextColor
        Accessible.ignored: true
    }
    background: Rectangle {
        radius: Theme.radius
        color: Theme.colors.sunken
        border { width: control.activeFocus ? 2 : 1; color: control.activeFocus ? Theme.colors.focus : control.hovered ? Theme.colors.strongLine : Theme.colors.line }
    }
}
