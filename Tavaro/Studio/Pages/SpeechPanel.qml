import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Settings
import Tavaro.Style
import Tavaro.Theme

// What speaks and what listens: the key of the voice service, the engines of this machine, and how to get more.
ColumnLayout {
    id: panel

    readonly property bool hasKey: Speech.keyState === "stored" || Speech.keyState === "environment"

    component Note: Label {
        Layout.fillWidth: true
        visible: text !== ""
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        color: Theme.colors.secondaryText
    }
    component Engines: ColumnLayout {
        id: engines

        required property string title
        property var rows: []

        Layout.fillWidth: true
        spacing: 10
        Label { text: engines.title; font.weight: Font.Medium }
        Note { visible: engines.rows.length === 0; text: Speech.isLooking ? qsTr("Looking…") : qsTr("None.") }
        Rows {
            spacing: 10
            model: engines.rows.length
            ColumnLayout {
                id: engine

                required property int index
                readonly property var about: engines.rows[index]

                spacing: 2
                RowLayout {
                    spacing: 8
                    Label { Layout.fillWidth: true; text: engine.about?.name ?? ""; textFormat: Text.PlainText; elide: Text.ElideRight }
                    Label {
                        text: engine.about?.isReady ? qsTr("ready") : qsTr("not here yet")
                        color: engine.about?.isReady ? Theme.colors.good : Theme.colors.secondaryText
                        font.pixelSize: Theme.captionSize
                    }
                }
                Note { text: engine.about?.about ?? ""; font.pixelSize: Theme.captionSize }
            }
        }
    }

    spacing: 16
    Component.onCompleted: Speech.look()

    Label {
        Layout.topMargin: 8
        text: qsTr("Voiceover")
        font { pixelSize: Theme.headingSize; weight: Font.DemiBold }
        Accessible.role: Accessible.Heading
    }
    Card {
        Layout.fillWidth: true
        implicitHeight: key.implicitHeight + 32
        ColumnLayout {
            id: key

            anchors { left: parent.left; right: parent.right; top: parent.top; margins: 16 }
            spacing: 10
            RowLayout {
                Label { Layout.fillWidth: true; text: qsTr("ElevenLabs API key"); font.weight: Font.Medium }
                Label {
                    text: Speech.keyState === "stored" ? qsTr("in your keychain") : Speech.keyState === "environment" ? qsTr("of this run, from the environment") : Speech.keyState === "none" ? qsTr("none") : ""
                    color: panel.hasKey ? Theme.colors.good : Theme.colors.secondaryText
                }
            }
            Note { text: qsTr("With it your narration can be spoken by the voices of your ElevenLabs account, which is paid by the character. It is kept in your keychain alone, and never shown again.") }
            RowLayout {
                visible: Speech.keyState !== "environment"
                spacing: 8
                TextField {
                    id: field

                    Layout.fillWidth: true
                    echoMode: TextInput.Password
                    placeholderText: panel.hasKey ? qsTr("Another ElevenLabs API key") : qsTr("Paste your ElevenLabs API key")
                    Accessible.name: qsTr("ElevenLabs API key")
                    onAccepted: store.clicked()
                }
                Button {
                    id: store

                    text: qsTr("Store")
                    enabled: field.length > 0 && !Speech.isBusy
                    Accessible.name: qsTr("Store the key")
                    onClicked: { Speech.store(field.text); field.clear(); }
                }
            }
            RowLayout {
                visible: panel.hasKey
                spacing: 8
                Button {
                    text: Speech.isBusy ? qsTr("Asking…") : qsTr("Check")
                    enabled: !Speech.isBusy
                    Accessible.name: qsTr("Check the key")
                    onClicked: Speech.check()
                }
                Button {
                    visible: Speech.keyState === "stored"
                    text: qsTr("Forget")
                    enabled: !Speech.isBusy
                    Accessible.name: qsTr("Forget the key")
                    onClicked: Speech.forget()
                }
            }
            Note {
                text: Speech.said
                color: Speech.isProblem ? Theme.colors.dangerText : Theme.colors.good
                Accessible.role: Accessible.AlertMessage
            }
        }
    }
    Card {
        Layout.fillWidth: true
        implicitHeight: all.implicitHeight + 32
        ColumnLayout {
            id: all

            anchors { left: parent.left; right: parent.right; top: parent.top; margins: 16 }
            spacing: 18
            Engines { title: qsTr("Voices of this machine"); rows: Speech.speakers }
            Engines { title: qsTr("Engines that transcribe"); rows: Speech.listeners }
            ColumnLayout {
                spacing: 6
                Label { text: qsTr("Models of whisper.cpp"); font.weight: Font.Medium }
                Note { text: Speech.model !== "" ? Speech.model : qsTr("The largest file “ggml-….bin” in %1 is used.").arg(Speech.modelFolder) }
                RowLayout {
                    spacing: 8
                    Button {
                        text: qsTr("Open the folder")
                        icon.source: Theme.icon("folder2-open")
                        Accessible.name: qsTr("Open the folder of models")
                        onClicked: Speech.openModelFolder()
                    }
                    Button {
                        text: qsTr("Choose a model…")
                        onClicked: model.open()
                    }
                    Button {
                        visible: Speech.model !== ""
                        text: qsTr("Use the largest")
                        onClicked: Speech.setModel("")
                    }
                }
            }
            Button {
                text: qsTr("Look again")
                enabled: !Speech.isLooking
                Accessible.name: qsTr("Look for engines and voices again")
                onClicked: Speech.look()
            }
        }
    }
    FileDialog {
        id: model

        title: qsTr("Choose a model of whisper.cpp")
        nameFilters: [qsTr("Models (ggml-*.bin)")]
        onAccepted: Speech.setModel(selectedFile)
    }
}
