import QtQuick
import QtQuick.Controls
import QtQuick.Controls.impl
import QtQuick.Templates as T
import Tavaro.Theme

T.ComboBox {
    id: control

    implicitWidth: Math.max(120, implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: Theme.controlHeight
    implicitContentWidthPolicy: T.ComboBox.WidestText
    leftPadding: 12
    rightPadding: 32
    hoverEnabled: true
    Accessible.description: enabled ? "" : qsTr("Not available now")
    Accessible.onPressAction: {
        control.forceActiveFocus(); // which closes the list by key, whoever opened it
        Reach.press(control);
    }
    Keys.onReturnPressed: Reach.press(control)

    delegate: ItemDelegate {
        required property var model
        required property int index

        width: ListView.view.width
        text: control.textAt(index)
        highlighted: control.highlightedIndex === index
        font.weight: control.currentIndex === index ? Font.DemiBold : Font.Normal
    }
    indicator: Icon {
        x: control.width - width - 10
        y: (control.height - height) / 2
        icon: "chevron-down"
        size: 12
    }
    contentItem: Text {
        text: control.displayText
        textFormat: Text.PlainText
        font: control.font
        color: control.enabled ? Theme.colors.text : Theme.colors.disabledText
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        Accessible.ignored: true
    }
    background: Rectangle {
        radius: Theme.radius
        color: control.down ? Theme.colors.pressed : control.hovered ? Theme.colors.hover : Theme.colors.raised
        border { width: 1; color: Theme.colors.strongLine }
        FocusRing { control: control }
    }
    popup: T.Popup {
        y: control.height + 4
        width: Math.max(control.width, 160)
        height: Math.min(contentItem.implicitHeight + topPadding + bottomPadding, control.Window.height - topMargin - bottomMargin)
        topMargin: 8
        bottomMargin: 8
        leftMargin: 8
        rightMargin: 8
        padding: 4
        contentItem: ListView {
            clip: true
            implicitHeight: contentHeight
            // Rows that outlived the list's closing would be taken apart after the control's own parts, which Qt 6.4
            // does not survive where an accessibility tree is told of them.
            model: control.popup.visible ? control.delegateModel : null
            currentIndex: control.highlightedIndex
            highlightMoveDuration: 0
            Accessible.role: Accessible.List
            Accessible.name: control.Accessible.name
            ScrollBar.vertical: ScrollBar {}
        }
        background: PopupBackground {}
    }
}
