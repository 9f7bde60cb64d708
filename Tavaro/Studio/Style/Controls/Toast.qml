import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Theme

// Says what was done, with a way back for a while.
Rectangle {
    id: control

    property string text
    property string actionText
    property int duration: 8000
    signal triggered
    signal ended

    function show() {
        visible = true;
        clock.restart();
    }
    function end() {
        if (!visible) return;
        visible = false;
        clock.stop();
        ended();
    }

    visible: false
    implicitWidth: Math.min(row.implicitWidth + 32, 560)
    implicitHeight: row.implicitHeight + 20
    radius: Theme.cardRadius
    color: Theme.colors.toast
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text
    Shadow {}

    Timer {
        id: clock

        interval: control.duration
        onTriggered: hover.hovered || action.activeFocus ? restart() : control.end()
    }
    HoverHandler { id: hover }
    RowLayout {
        id: row

        anchors { fill: parent; leftMargin: 16; rightMargin: 16; topMargin: 10; bottomMargin: 10 }
        spacing: 16
        Label {
            Layout.fillWidth: true
            text: control.text
            color: Theme.colors.toastText
            wrapMode: Text.Wrap
            Accessible.ignored: true
        }
        ToolButton {
            id: action

            visible: control.actionText !== ""
            text: control.actionText
            implicitHeight: 26
            icon.color: Theme.colors.toastAction
            contentItem: Text {
                text: control.actionText
                font { family: Theme.face; pixelSize: Theme.bodySize; weight: Font.DemiBold; underline: action.hovered }
                color: Theme.colors.toastAction
                verticalAlignment: Text.AlignVCenter
                Accessible.ignored: true
            }
            background: Item { FocusRing { control: action } }
            onClicked: {
                control.triggered();
                control.visible = false;
                clock.stop();
            }
        }
    }
}
