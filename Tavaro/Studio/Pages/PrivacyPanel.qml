import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Theme

// What the film hides.
SidePage {
    id: page

    required property EditorDesk desk
    readonly property EditorSession session: desk.session

    AddRow { session: page.session; names: ["addRedaction"] }
    ItemRows { session: page.session; kind: "redaction"; empty: qsTr("Nothing is hidden.") }
    FieldGroup {
        title: qsTr("What is private")
        FieldList { session: page.session; fields: page.session.fieldsOf("redactionSettings") }
    }
}
