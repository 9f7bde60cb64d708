import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Theme

// The pointer that the film shows, and its clicks.
SidePage {
    id: page

    required property EditorDesk desk
    readonly property EditorSession session: desk.session
    readonly property InspectorModel fields: session.fieldsOf("cursor")
    readonly property var clicks: ["clickColor", "clickDuration", "clickSound", "clickSoundVolume"]

    title: qsTr("Pointer and clicks")

    LookGrid { desk: page.desk; section: "cursor"; path: "style"; subject: "pointer" }
    FieldList { session: page.session; fields: page.fields; without: page.clicks.concat(["style", "clickEffect"]) }
    FieldGroup {
        title: qsTr("Clicks")
        LookGrid { desk: page.desk; section: "cursor"; path: "clickEffect"; subject: "pointer" }
        FieldList { session: page.session; fields: page.fields; only: page.clicks }
    }
}
