import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Style
import Tavaro.Theme
import Tavaro.Voice

// The narration, line by line: written, drafted or pasted here, and spoken.
Item {
    id: panel

    required property EditorDesk desk
    readonly property EditorSession session: desk.session
    readonly property VoiceDesk voice: desk.voice
    readonly property ScriptLines script: voice.script
    readonly property VoiceoverRun run: voice.voiceover

    Component.onCompleted: voice.offer.look()

    ColumnLayout {
        anchors { fill: parent; margins: 12; leftMargin: 14 }
        spacing: 8

        RowLayout {
            spacing: 2
            Label {
                Layout.fillWidth: true
                text: qsTr("Script")
                font { pixelSize: Theme.headingSize - 1; weight: Font.DemiBold }
                elide: Text.ElideRight
                Accessible.role: Accessible.Heading
            }
            ToolButton {
                icon.source: Theme.icon("plus-lg")
                ToolTip.text: qsTr("Add a line at the playhead")
                onClicked: panel.script.add()
            }
            ToolButton {
                visible: list.visible
                icon.source: Theme.icon("stars")
                ToolTip.text: qsTr("Draft the script anew…")
                enabled: !panel.run.isRunning
                onClicked: draft.ask()
            }
            ToolButton {
                visible: list.visible
                icon.source: Theme.icon("clipboard")
                ToolTip.text: qsTr("Edit or paste the whole script…")
                enabled: !panel.run.isRunning
                onClicked: paste.ask()
            }
        }
        RowList {
            id: list

            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.rightMargin: -10
            visible: count > 0
            spacing: 8
            model: panel.script
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Lines of the script")
            ScrollBar.vertical: ScrollBar {}

            delegate: ScriptLine {
                width: list.width - 14
                session: panel.session
                script: panel.script
                run: panel.run
            }
        }
        Label {
            Layout.fillWidth: true
            visible: !list.visible
            text: qsTr("There is no script yet. Tavaro drafts one from what happens in the film: the clicks, what is typed, the applications. Or paste your own, one line for each sentence, with a time before it where you want one.")
            wrapMode: Text.Wrap
            lineHeight: 1.2
            color: Theme.colors.secondaryText
        }
        RowLayout {
            visible: !list.visible
            spacing: 8
            Button {
                Layout.fillWidth: true
                highlighted: true
                text: qsTr("Draft…")
                icon.source: Theme.icon("stars")
                Accessible.name: qsTr("Draft a script")
                onClicked: draft.ask()
            }
            Button {
                Layout.fillWidth: true
                text: qsTr("Paste script…")
                icon.source: Theme.icon("clipboard")
                onClicked: paste.ask()
            }
        }
        Item { Layout.fillHeight: true; visible: !list.visible }
        ScriptSpeaking {
            Layout.fillWidth: true
            visible: list.visible
            voice: panel.voice
        }
    }
    Connections {
        target: panel.script
        function onCurrentChanged() { if (panel.script.current >= 0) list.positionViewAtIndex(panel.script.current, ListView.Contain) }
    }
    ScriptDraftDialog { id: draft; script: panel.script; replaces: list.count > 0 }
    ScriptPasteDialog { id: paste; script: panel.script }
}
