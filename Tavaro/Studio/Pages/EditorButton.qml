import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Theme

// One of the editor's commands.
ToolButton {
    id: button

    required property string name
    required property string picture
    property string detail
    property EditorSession session: null
    readonly property EditorCommand command: session?.command(name) ?? null
    readonly property string title: [command?.title ?? "", detail].filter(Boolean).join(" ")

    enabled: command?.enabled ?? false
    text: title
    display: AbstractButton.IconOnly
    icon.source: Theme.icon(picture)
    ToolTip.text: command?.shortcut ? qsTr("%1 (%2)").arg(title).arg(command.shortcut) : title
    onClicked: command.trigger()
}
