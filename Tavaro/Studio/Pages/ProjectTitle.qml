import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Theme

// The project's name, which is edited in place: a click, or the command.
Item {
    id: title

    required property string name
    property EditorSession session: null

    function rename() {
        field.text = name;
        field.visible = true;
        field.selectAll();
        field.forceActiveFocus();
    }
    function end(isKept: bool) {
        if (!field.visible) return;
        field.visible = false;
        if (isKept && field.text.trim() !== "") session.rename(field.text.trim());
    }

    implicitWidth: field.visible ? Math.max(280, label.implicitWidth) : label.implicitWidth
    implicitHeight: Theme.controlHeight

    ToolButton {
        id: label

        anchors { left: parent.left; leftMargin: -10; verticalCenter: parent.verticalCenter }
        width: Math.min(implicitWidth, title.width + 20)
        visible: !field.visible
        text: title.name
        font { pixelSize: Theme.headingSize; weight: Font.DemiBold }
        ToolTip.text: qsTr("Rename (F2)")
        Accessible.name: qsTr("Rename %1").arg(title.name)
        onClicked: title.rename()
    }
    TextField {
        id: field

        anchors.fill: parent
        visible: false
        Accessible.name: qsTr("New name of %1").arg(title.name)
        onAccepted: title.end(true)
        Keys.onEscapePressed: title.end(false)
        onActiveFocusChanged: if (!activeFocus) title.end(true)
    }
}
