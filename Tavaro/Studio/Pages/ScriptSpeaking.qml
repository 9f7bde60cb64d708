import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Style
import Tavaro.Theme
import Tavaro.Voice

// Speaks what is not spoken yet: how much that is, what it costs, how far it is, and why it ended early. No layout: one
// inside of another learns too late how many lines a text takes.
Column {
    id: speaking

    required property VoiceDesk voice
    readonly property VoiceoverRun run: voice.voiceover
    readonly property string count: run.lines === 1 ? qsTr("1 line") : qsTr("%1 lines").arg(run.lines)
    readonly property string price: !run.isCostKnown ? "" : run.isPaid ? qsTr(" · %1 characters").arg(run.characters) : qsTr(" · free")

    spacing: 6

    Label {
        width: parent.width
        visible: speaking.run.failure !== ""
        text: speaking.run.failure
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        color: Theme.colors.dangerText
        Accessible.role: Accessible.AlertMessage
    }
    Label {
        width: parent.width
        visible: text !== ""
        text: [speaking.voice.offer.voiceName, speaking.run.isPaid ? speaking.run.cost : ""].filter(Boolean).join(". ")
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        color: Theme.colors.secondaryText
        font.pixelSize: Theme.captionSize
    }
    Button {
        width: parent.width
        visible: !speaking.run.isRunning
        highlighted: true
        enabled: speaking.run.lines > 0
        icon.source: Theme.icon("volume-up")
        text: speaking.run.lines === 0 ? qsTr("All lines are spoken") : qsTr("Generate %1%2").arg(speaking.count).arg(speaking.price)
        onClicked: speaking.run.generate()
    }
    RowLayout {
        width: parent.width
        visible: speaking.run.isRunning
        spacing: 10
        ProgressBar {
            Layout.fillWidth: true
            indeterminate: speaking.run.total === 0
            value: speaking.run.total > 0 ? speaking.run.done / speaking.run.total : 0
            Accessible.name: qsTr("Lines spoken")
        }
        Label {
            text: qsTr("%1 of %2").arg(speaking.run.done).arg(speaking.run.total)
            font.pixelSize: Theme.captionSize
        }
        Button {
            text: qsTr("Stop")
            enabled: !speaking.run.isStopping
            Accessible.name: qsTr("Stop speaking")
            onClicked: speaking.run.cancel()
        }
    }
}
