import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Style
import Tavaro.Theme
import Tavaro.Voice

// What is said, as a text: deleting words of it cuts the film.
Item {
    id: panel

    required property EditorDesk desk
    readonly property EditorSession session: desk.session
    readonly property TranscriptModel words: session.transcript
    readonly property TranscriptionRun run: desk.voice.transcription
    property bool isAnew: false // whether it is to be made again
    readonly property bool isText: words.entryCount > 0 && !isAnew && !run.isRunning

    Connections {
        target: panel.words
        function onTextChanged() { if (!panel.run.isRunning) panel.isAnew = false }
    }
    Binding { target: panel.words; property: "quietColor"; value: Theme.colors.secondaryText }
    Binding { target: panel.words; property: "fillerColor"; value: Theme.colors.warning }
    Binding { target: panel.words; property: "matchColor"; value: Theme.colors.selection }

    ColumnLayout {
        anchors { fill: parent; margins: 14; topMargin: 12 }
        spacing: 8

        RowLayout {
            Label {
                Layout.fillWidth: true
                text: qsTr("Transcript")
                font { pixelSize: Theme.headingSize - 1; weight: Font.DemiBold }
                Accessible.role: Accessible.Heading
            }
            ToolButton {
                visible: panel.words.entryCount > 0 && !panel.run.isRunning
                icon.source: Theme.icon(panel.isAnew ? "x-lg" : "mic")
                ToolTip.text: panel.isAnew ? qsTr("Back to the transcript") : qsTr("Transcribe anew…")
                onClicked: panel.isAnew = !panel.isAnew
            }
        }
        TranscriptSearch {
            Layout.fillWidth: true
            visible: panel.isText
            words: panel.words
            onFound: { text.show(panel.words.selectionFirst); panel.session.playhead = panel.words.timeOf(panel.words.selectionFirst); }
        }
        Flow {
            Layout.fillWidth: true
            spacing: 4
            visible: panel.isText

            component All: EditorButton {
                session: panel.session
                display: AbstractButton.TextOnly
                height: 28
                font.pixelSize: Theme.captionSize
            }
            All {
                name: "removeFillers"
                picture: "scissors"
                visible: panel.words.fillers > 0
                text: panel.words.fillers === 1 ? qsTr("Remove 1 filler word") : qsTr("Remove %1 filler words").arg(panel.words.fillers)
            }
            All {
                name: "tightenPauses"
                picture: "scissors"
                visible: panel.words.pauses > 0
                text: panel.words.pauses === 1 ? qsTr("Tighten 1 pause") : qsTr("Tighten %1 pauses").arg(panel.words.pauses)
            }
            CheckBox {
                height: 28
                visible: panel.words.cutWords > 0 || !panel.words.showsCutWords
                text: qsTr("Show words that are cut")
                font.pixelSize: Theme.captionSize
                checked: panel.words.showsCutWords
                onToggled: panel.words.showsCutWords = checked
            }
        }
        TranscriptText {
            id: text

            Layout.fillWidth: true
            Layout.fillHeight: true
            visible: panel.isText
            desk: panel.desk
        }
        RowLayout {
            visible: text.visible
            Button {
                Layout.fillWidth: true
                text: qsTr("Cut from film")
                icon.source: Theme.icon("scissors")
                enabled: panel.words.canDelete
                onClicked: panel.words.deleteSelected()
            }
            Button {
                Layout.fillWidth: true
                text: qsTr("Restore")
                icon.source: Theme.icon("arrow-counterclockwise")
                enabled: panel.words.canRestore
                onClicked: panel.words.restoreSelected()
            }
        }
        TranscribePage {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.leftMargin: -14
            Layout.rightMargin: -14
            visible: !text.visible
            desk: panel.desk
            said: panel.words.isThere && panel.words.entryCount === 0 ? qsTr("Nothing is said in this film.") : panel.words.isThere ? qsTr("The words are heard anew, and take the place of those that there are. Captions and cuts stay.") : qsTr("What is said becomes text, on this machine. Deleting words of it then cuts the film.")
            onImportWanted: file.open()
        }
    }
    FileDialog {
        id: file

        title: qsTr("Import captions")
        nameFilters: [qsTr("Captions (*.srt *.vtt)")]
        onAccepted: panel.session.captions.importFrom(selectedFile)
    }
}
