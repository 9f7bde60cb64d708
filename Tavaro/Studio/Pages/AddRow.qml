import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor

// Commands that add something at the playhead.
Flow {
    id: row

    required property EditorSession session
    required property var names

    Layout.fillWidth: true
    spacing: 6

    Repeater {
        model: row.names
        Button {
            id: button

            required property string modelData
            readonly property EditorCommand command: row.session.command(modelData)

            implicitHeight: 28
            horizontalPadding: 10
            text: command?.title ?? ""
            enabled: command?.enabled ?? false
            onClicked: command.trigger()
        }
    }
}
