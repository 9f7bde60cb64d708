import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Style
import Tavaro.Theme

// The film's tracks of sound, and what is spoken over it.
SidePage {
    id: page

    required property EditorDesk desk
    readonly property EditorSession session: desk.session

    title: qsTr("Sound and voice-over")

    Label {
        Layout.fillWidth: true
        visible: tracks.count === 0
        text: qsTr("This film has no sound.")
        color: Theme.colors.secondaryText
    }
    Rows {
        id: tracks

        spacing: 10
        model: page.session.list("track")
        FieldGroup {
            id: group

            required property string identity

            FieldList { session: page.session; fields: page.session.fieldsOf(group.identity); without: ["role"] }
        }
    }
    FieldGroup {
        title: qsTr("Silences")
        AddRow { session: page.session; names: ["removeSilence", "tightenPauses", "removeFillers"] }
        ItemRows { session: page.session; kind: "silence"; empty: qsTr("No silences are marked. Auto Polish finds them.") }
    }
    FieldGroup {
        title: qsTr("Voice-over")
        FieldList { session: page.session; fields: page.session.fieldsOf("voiceover") }
        ItemRows { session: page.session; kind: "voiceover"; empty: qsTr("Nothing is spoken over the film.") }
    }
}
