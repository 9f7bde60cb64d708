import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Style
import Tavaro.Theme
import Tavaro.Voice

// Makes a transcript: by which engine, in which language, of which sound; the words as they come.
SidePage {
    id: page

    required property EditorDesk desk
    readonly property TranscriptionRun run: desk.voice.transcription
    readonly property var ready: run.engines.filter(each => each.isReady)
    property string said // why it is shown
    signal importWanted

    component Hint: Label {
        Layout.fillWidth: true
        visible: text !== ""
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        color: Theme.colors.secondaryText
        font.pixelSize: Theme.captionSize
    }
    component Name: Label { visible: !page.run.isRunning; Accessible.ignored: true }

    Component.onCompleted: if (visible) run.look()
    onVisibleChanged: if (visible && run.engines.length === 0) run.look()

    Label {
        Layout.fillWidth: true
        visible: !page.run.isRunning
        text: page.run.tracks.length === 0 ? qsTr("This film has no sound in which somebody could speak.") : page.said
        wrapMode: Text.Wrap
        lineHeight: 1.2
        color: Theme.colors.secondaryText
    }
    Name { text: qsTr("Sound"); visible: tracks.visible }
    ComboBox {
        id: tracks

        Layout.fillWidth: true
        visible: page.run.tracks.length > 1 && !page.run.isRunning
        model: page.run.tracks
        textRole: "name"
        currentIndex: page.run.tracks.findIndex(each => each.role === page.run.track)
        Accessible.name: qsTr("Sound to transcribe")
        onActivated: index => {
            page.run.track = page.run.tracks[index].role;
            currentIndex = Qt.binding(() => page.run.tracks.findIndex(each => each.role === page.run.track));
        }
    }
    Name { text: qsTr("Language") }
    TextField {
        id: language

        Layout.fillWidth: true
        visible: !page.run.isRunning
        text: page.run.locale
        placeholderText: qsTr("en-US")
        Accessible.name: qsTr("Language that is spoken")
        onEditingFinished: { page.run.locale = text; text = Qt.binding(() => page.run.locale); }
    }
    Name { text: qsTr("Engine"); visible: engines.visible }
    ComboBox {
        id: engines

        Layout.fillWidth: true
        visible: page.ready.length > 1 && !page.run.isRunning
        model: page.ready
        textRole: "name"
        currentIndex: page.ready.findIndex(each => each.id === page.run.engine)
        Accessible.name: qsTr("Engine")
        onActivated: index => {
            page.run.engine = page.ready[index].id;
            currentIndex = Qt.binding(() => page.ready.findIndex(each => each.id === page.run.engine));
        }
    }
    Label {
        Layout.fillWidth: true
        visible: page.run.failure !== ""
        text: page.run.failure
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        color: Theme.colors.dangerText
        Accessible.role: Accessible.AlertMessage
    }
    Button {
        Layout.fillWidth: true
        visible: !page.run.isRunning
        highlighted: true
        enabled: page.run.canStart
        text: qsTr("Transcribe")
        icon.source: Theme.icon("mic")
        onClicked: page.run.start()
    }
    RowLayout {
        visible: page.run.isRunning
        spacing: 10
        ProgressBar {
            Layout.fillWidth: true
            indeterminate: page.run.progress < 0
            value: Math.max(0, page.run.progress)
            Accessible.name: qsTr("Sound transcribed")
        }
        Button {
            text: page.run.isStopping ? qsTr("Stopping…") : qsTr("Stop")
            enabled: !page.run.isStopping
            Accessible.name: qsTr("Stop transcribing")
            onClicked: page.run.cancel()
        }
    }
    Hint {
        visible: page.run.isRunning
        text: page.run.words === 1 ? qsTr("%1, 1 word").arg(page.run.state) : qsTr("%1, %2 words").arg(page.run.state).arg(page.run.words)
    }
    Label {
        Layout.fillWidth: true
        visible: page.run.isRunning && text !== ""
        text: page.run.heard
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        lineHeight: 1.2
        Accessible.name: qsTr("Heard so far: %1").arg(text)
    }
    Rows {
        spacing: 4
        model: page.run.remarks
        Hint {
            required property string modelData

            text: modelData
        }
    }
    Button {
        Layout.fillWidth: true
        visible: !page.run.isRunning
        text: qsTr("Import captions…")
        icon.source: Theme.icon("download")
        onClicked: page.importWanted()
    }
    FieldGroup {
        title: qsTr("What can hear")
        visible: !page.run.isRunning
        Hint { text: page.run.isLooking && page.run.engines.length === 0 ? qsTr("Looking for engines…") : "" }
        // Made when there are some, at the width that it has then.
        Loader {
            Layout.fillWidth: true
            active: page.run.engines.length > 0
            sourceComponent: Rows {
                spacing: 10
                model: page.run.engines.length
                ColumnLayout {
                    id: engine

                    required property int index
                    readonly property var about: page.run.engines[index]

                    spacing: 2
                    RowLayout {
                        spacing: 8
                        Label { Layout.fillWidth: true; text: engine.about?.name ?? ""; elide: Text.ElideRight; font.weight: Font.Medium }
                        Label {
                            text: engine.about?.isReady ? qsTr("ready") : qsTr("not here yet")
                            color: engine.about?.isReady ? Theme.colors.good : Theme.colors.secondaryText
                            font.pixelSize: Theme.captionSize
                        }
                    }
                    Hint { text: engine.about?.about ?? "" }
                }
            }
        }
    }
}
