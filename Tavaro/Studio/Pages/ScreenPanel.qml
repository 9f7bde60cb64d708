import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Theme

// How the recording is looked at: its crop, and the zooms.
SidePage {
    id: page

    required property EditorDesk desk
    readonly property EditorSession session: desk.session

    AddRow { session: page.session; names: ["addZoom", "addLoupe"] }
    ItemRows { session: page.session; kind: "zoom"; empty: qsTr("No zooms yet. Auto Polish adds them where you clicked.") }
    FieldGroup {
        title: qsTr("Crop")
        FieldList { session: page.session; fields: page.session.fieldsOf("project"); only: ["sourceCrop"] }
    }
}
