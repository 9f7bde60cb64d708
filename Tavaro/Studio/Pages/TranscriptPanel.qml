import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Style
import Tavaro.Theme

// What is said, as a text: deleting words of it cuts the film.
Item {
    id: panel

    required property EditorDesk desk
    readonly property EditorSession session: desk.session
    readonly property TranscriptModel words: session.transcript

    Binding { target: panel.words; property: "quietColor"; value: Theme.colors.secondaryText }
    Binding { target: panel.words; property: "fillerColor"; value: Theme.colors.warning }
    Binding { target: panel.words; property: "matchColor"; value: Theme.colors.selection }

    ColumnLayout {
        anchors { fill: parent; margins: 14; topMargin: 12 }
        spacing: 8

        Label {
            text: qsTr("Transcript")
            font { pixelSize: Theme.headingSize - 1; weight: Font.DemiBold }
            Accessible.role: Accessible.Heading
        }
        TranscriptSearch {
            Layout.fillWidth: true
            visible: panel.words.entryCount > 0
            words: panel.words
            onFound: { text.show(panel.words.selectionFirst); panel.session.playhead = panel.words.timeOf(panel.words.selectionFirst); }
        }
        Flow {
            Layout.fillWidth: true
            spacing: 4
            visible: panel.words.entryCount > 0

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
            visible: panel.words.entryCount > 0
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
        Label {
            Layout.fillWidth: true
            visible: !text.visible
            text: panel.words.isThere ? qsTr("Nothing is said in this film.") : qsTr("This project has no transcript. Speech cannot be recognized in this version. Captions can be imported from a SubRip or WebVTT file, and edited on the page “Captions”.")
            wrapMode: Text.Wrap
            lineHeight: 1.2
            color: Theme.colors.secondaryText
        }
        Button {
            visible: !panel.words.isThere
            text: qsTr("Import captions…")
            icon.source: Theme.icon("download")
            onClicked: file.open()
        }
        Item { Layout.fillHeight: true; visible: !text.visible }
    }
    FileDialog {
        id: file

        title: qsTr("Import captions")
        nameFilters: [qsTr("Captions (*.srt *.vtt)")]
        onAccepted: panel.session.captions.importFrom(selectedFile)
    }
}
