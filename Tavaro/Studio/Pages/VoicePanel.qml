import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Style
import Tavaro.Theme
import Tavaro.Voice

// Who speaks the narration, how fast, and what becomes of the film under it.
SidePage {
    id: page

    required property EditorDesk desk
    readonly property VoiceDesk voice: desk.voice
    readonly property VoiceOffer offer: voice.offer
    readonly property ScriptLines script: voice.script
    readonly property VoiceoverRun run: voice.voiceover

    component Hint: Label {
        Layout.fillWidth: true
        visible: text !== ""
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        color: Theme.colors.secondaryText
        font.pixelSize: Theme.captionSize
    }
    // One of several records with `id` and `name`.
    component Choice: ComboBox {
        id: choice

        property var options: []
        property string value
        signal chosen(string id)

        function follow() { currentIndex = Qt.binding(() => options.findIndex(each => each.id === value)) }

        Layout.fillWidth: true
        model: options
        textRole: "name"
        onModelChanged: follow()
        onActivated: index => { chosen(options[index].id); follow(); }
        Component.onCompleted: follow()
    }
    // What is dragged is one step.
    component StepSlider: Slider {
        id: slider

        property double given: 0
        signal chosen(double value)

        function give() {
            if (!pressed && value !== given) chosen(value);
        }

        implicitHeight: 22
        Layout.fillWidth: true
        value: given
        onMoved: give()
        onPressedChanged: {
            give();
            if (!pressed) value = Qt.binding(() => given);
        }
    }

    title: qsTr("Voice")
    Component.onCompleted: offer.look()

    Hint {
        visible: page.offer.voices.length === 0
        text: page.offer.isLooking ? qsTr("Looking for voices…") : qsTr("There is no voice on this machine. Settings → Voiceover says how to get some.")
    }
    Label { text: qsTr("Language"); visible: languages.visible; Accessible.ignored: true }
    Choice {
        id: languages

        visible: page.offer.languages.length > 0
        options: page.offer.languages
        value: page.offer.language
        Accessible.name: qsTr("Language of the voice")
        onChosen: id => page.offer.language = id
    }
    Label { text: qsTr("Voice"); visible: voices.visible; Accessible.ignored: true }
    Choice {
        id: voices

        visible: page.offer.voices.length > 0
        options: page.offer.voices
        value: page.offer.voice
        displayText: currentIndex < 0 ? qsTr("Choose a voice") : currentText
        Accessible.name: qsTr("Voice that speaks")
        onChosen: id => page.offer.voice = id
    }
    Hint { text: page.offer.voices.find(each => each.id === page.offer.voice)?.about ?? "" }
    Hint { text: page.offer.isPaid ? qsTr("Every new line is paid for by its characters from your ElevenLabs account; so is the sample, once.") : "" }
    RowLayout {
        visible: page.offer.voice !== ""
        spacing: 8
        Button {
            Layout.fillWidth: true
            text: page.voice.sample.isMaking ? qsTr("Speaking…") : page.voice.sample.isPlaying ? qsTr("Stop") : qsTr("Hear first")
            icon.source: Theme.icon(page.voice.sample.isPlaying || page.voice.sample.isMaking ? "stop-fill" : "play-fill")
            Accessible.name: page.voice.sample.isPlaying || page.voice.sample.isMaking ? qsTr("Stop the sample") : qsTr("Hear %1 first").arg(page.offer.voiceName)
            onClicked: page.voice.sample.isPlaying || page.voice.sample.isMaking ? page.voice.sample.stop() : page.voice.sample.hear()
        }
    }
    Label {
        Layout.fillWidth: true
        visible: page.voice.sample.failure !== ""
        text: page.voice.sample.failure
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        color: Theme.colors.dangerText
    }
    RowLayout {
        Label { Layout.fillWidth: true; text: qsTr("Speed"); Accessible.ignored: true }
        Label { text: qsTr("%1×").arg(Number(speed.value.toFixed(2))); color: Theme.colors.secondaryText; Accessible.ignored: true }
    }
    StepSlider {
        id: speed

        from: 0.5
        to: 2
        stepSize: 0.05
        given: page.offer.speed
        Accessible.name: qsTr("Speed of the voice")
        onChosen: value => page.offer.speed = value
    }

    FieldGroup {
        title: qsTr("On the film")
        Label { text: qsTr("Where a line is too long"); Accessible.ignored: true }
        Segmented {
            Layout.fillWidth: true
            name: qsTr("Where a line is too long")
            options: [{ text: qsTr("Push on"), value: false }, { text: qsTr("Hold the frame"), value: true }]
            value: page.script.holdsFrame
            onChosen: value => page.script.holdsFrame = value
        }
        Hint { text: page.script.holdsFrame ? qsTr("The picture stops until the line is over, so that the next line meets its action.") : qsTr("The film goes on, and the next lines come later.") }
        RowLayout {
            Label { Layout.fillWidth: true; text: qsTr("Quieten other sound under it"); wrapMode: Text.Wrap; Accessible.ignored: true }
            Switch {
                checked: page.script.ducks
                Accessible.name: qsTr("Quieten other sound")
                onToggled: { page.script.ducks = checked; checked = Qt.binding(() => page.script.ducks); }
            }
        }
        StepSlider {
            visible: page.script.ducks
            from: 0
            to: 1
            stepSize: 0.05
            given: page.script.duckAmount
            Accessible.name: qsTr("By how much")
            onChosen: value => page.script.duckAmount = value
        }
    }
    FieldGroup {
        title: qsTr("Captions")
        RowLayout {
            Label { Layout.fillWidth: true; text: qsTr("Make them with each generation"); wrapMode: Text.Wrap; Accessible.ignored: true }
            Switch {
                checked: page.run.makesCaptions
                Accessible.name: qsTr("Make captions with each generation")
                onToggled: { page.run.makesCaptions = checked; checked = Qt.binding(() => page.run.makesCaptions); }
            }
        }
        Button {
            Layout.fillWidth: true
            text: qsTr("Captions from the voiceover")
            icon.source: Theme.icon("badge-cc")
            enabled: page.script.hasSound && !page.run.isRunning
            onClicked: page.run.makeCaptions()
        }
        Hint { text: qsTr("They take the place of the captions that there are.") }
    }
}
