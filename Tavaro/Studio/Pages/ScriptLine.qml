import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Style
import Tavaro.Theme
import Tavaro.Voice

// One line of the narration: when it begins, its text, whether it is spoken, and why not.
Rectangle {
    id: row

    required property int index
    required property string identity
    required property double start
    required property string text
    required property string stage
    required property string failure
    property EditorSession session: null
    property ScriptLines script: null
    property VoiceoverRun run: null
    readonly property CaptionEditor times: session.captions
    readonly property bool isCurrent: script.current === index
    readonly property var stages: ({
        spoken: qsTr("spoken"),
        changed: qsTr("changed"),
        unspoken: qsTr("not spoken"),
        waiting: qsTr("to be spoken…"),
        empty: qsTr("empty")
    })

    height: column.implicitHeight + 16
    radius: Theme.radius
    color: isCurrent ? Theme.colors.selection : Theme.colors.raised
    border { width: 1; color: isCurrent ? Theme.colors.accent : Theme.colors.line }
    Accessible.role: Accessible.ListItem
    Accessible.name: qsTr("%1, %2").arg(row.text === "" ? qsTr("Empty line") : row.text).arg(stages[stage] ?? "")
    Accessible.onPressAction: row.session.playhead = row.start

    TapHandler { onTapped: row.session.playhead = row.start }

    ColumnLayout {
        id: column

        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 8 }
        spacing: 6

        RowLayout {
            spacing: 6
            CaptionTime {
                captions: row.times
                seconds: row.start
                Accessible.name: qsTr("Start of line %1").arg(row.index + 1)
                onChosen: seconds => row.script.setStart(row.identity, seconds)
            }
            Label {
                Layout.fillWidth: true
                text: row.stages[row.stage] ?? ""
                elide: Text.ElideRight
                color: row.stage === "spoken" ? Theme.colors.good : row.stage === "changed" ? Theme.colors.warning : Theme.colors.secondaryText
                font.pixelSize: Theme.captionSize
            }

            component Act: ToolButton {
                implicitWidth: 24
                implicitHeight: 28
                padding: 4
                horizontalPadding: 4
                icon { width: 14; height: 14 }
            }
            Row {
                Act {
                    visible: row.stage !== "spoken"
                    enabled: !row.run.isRunning && row.stage !== "empty"
                    icon.source: Theme.icon("volume-up")
                    ToolTip.text: qsTr("Speak this line")
                    onClicked: row.run.generateLine(row.identity)
                }
                Act {
                    icon.source: Theme.icon("trash")
                    ToolTip.text: qsTr("Delete this line")
                    onClicked: row.script.remove(row.identity)
                }
            }
        }
        CaptionText {
            Layout.fillWidth: true
            text: row.text
            name: qsTr("Text of line %1").arg(row.index + 1)
            onFocused: row.session.playhead = row.start
            onWritten: text => row.script.setText(row.identity, text)
        }
        Label {
            Layout.fillWidth: true
            visible: row.failure !== ""
            text: row.failure
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            color: Theme.colors.dangerText
            font.pixelSize: Theme.captionSize
        }
        Button {
            visible: row.failure !== ""
            implicitHeight: 28
            enabled: !row.run.isRunning
            text: qsTr("Try again")
            icon.source: Theme.icon("arrow-clockwise")
            Accessible.name: qsTr("Try line %1 again").arg(row.index + 1)
            onClicked: row.run.generateLine(row.identity)
        }
    }
}
