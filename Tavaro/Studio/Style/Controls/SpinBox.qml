import QtQuick
import QtQuick.Controls.impl
import QtQuick.Templates as T
import Tavaro.Theme

T.SpinBox {
    id: control

    // As the accessibility tree asks for them.
    readonly property real minimumValue: from
    readonly property real maximumValue: to
    component Step: Rectangle {
        property string icon
        property bool isDown
        property bool isOver

        width: 24
        height: (control.height - 4) / 2
        x: control.width - width - 2
        radius: 4
        color: isDown ? Theme.colors.pressed : isOver ? Theme.colors.hover : "transparent"
        IconImage {
            anchors.centerIn: parent
            source: Theme.icon(parent.icon)
            sourceSize { width: 10; height: 10 }
            color: Theme.colors.secondaryText
        }
    }

    implicitWidth: 110
    implicitHeight: Theme.controlHeight
    editable: true
    hoverEnabled: true
    leftPadding: 10
    rightPadding: 28
    validator: IntValidator {
        bottom: Math.min(control.from, control.to)
        top: Math.max(control.from, control.to)
    }
    Accessible.description: enabled ? "" : qsTr("Not available now")
    Accessible.onIncreaseAction: { increase(); valueModified(); }
    Accessible.onDecreaseAction: { decrease(); valueModified(); }

    contentItem: TextInput {
        text: control.displayText
        font: control.font
        color: control.enabled ? Theme.colors.text : Theme.colors.disabledText
        selectionColor: Theme.colors.accent
        selectedTextColor: Theme.colors.onAccent
        verticalAlignment: TextInput.AlignVCenter
        readOnly: !control.editable
        selectByMouse: true
        validator: control.validator
        inputMethodHints: control.inputMethodHints
        Accessible.ignored: true
    }
    up.indicator: Step { icon: "chevron-up"; y: 2; isDown: control.up.pressed; isOver: control.up.hovered }
    down.indicator: Step { icon: "chevron-down"; y: control.height / 2; isDown: control.down.pressed; isOver: control.down.hovered }
    background: Rectangle {
        radius: Theme.radius
        color: Theme.colors.sunken
        border { width: control.activeFocus ? 2 : 1; color: control.activeFocus ? Theme.colors.focus : Theme.colors.line }
    }
}
