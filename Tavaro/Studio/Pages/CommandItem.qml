import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Theme

// A command of the editor in a menu, with its shortcut. A name with "-" before it begins a group.
MenuItem {
    id: item

    required property string name
    property EditorSession session: null
    readonly property bool beginsGroup: name.startsWith("-")
    readonly property EditorCommand command: session?.command(name.replace("-", "")) ?? null
    readonly property string detail: command?.name === "undo" ? session.undoName : command?.name === "redo" ? session.redoName : ""

    text: [command?.title ?? "", detail].filter(Boolean).join(" ")
    enabled: command?.enabled ?? false
    topPadding: beginsGroup ? 9 : 0
    topInset: topPadding
    implicitHeight: beginsGroup ? 39 : 30
    rightPadding: keys.implicitWidth > 0 ? keys.implicitWidth + 34 : 14
    onTriggered: command.trigger()

    Label {
        id: keys

        anchors { right: parent.right; rightMargin: 14; verticalCenter: parent.verticalCenter; verticalCenterOffset: item.topPadding / 2 }
        text: item.command?.shortcut ?? ""
        color: item.enabled ? Theme.colors.secondaryText : Theme.colors.disabledText
        font.pixelSize: Theme.captionSize
        Accessible.ignored: true
    }
    Rectangle {
        x: 4
        y: 4
        width: parent.width - 8
        height: 1
        visible: item.beginsGroup
        color: Theme.colors.line
    }
}
