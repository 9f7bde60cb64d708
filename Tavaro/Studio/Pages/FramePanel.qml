import QtQuick
import QtQuick.Layouts
import Tavaro.Editor

// How the recording is framed.
SidePage {
    id: page

    required property EditorDesk desk
    readonly property EditorSession session: desk.session
    readonly property InspectorModel screen: session.fieldsOf("screen")
    readonly property var rooms: ["padding", "cornerRadius", "inset", "insetColor"]
    readonly property var shadows: ["shadowRadius", "shadowOpacity", "shadowOffsetY"]

    LookGrid { desk: page.desk; section: "screen"; path: "frame"; subject: "film" }
    FieldList { session: page.session; fields: page.screen; only: ["frameTint"] }
    FieldGroup {
        title: qsTr("Room and corners")
        FieldList { session: page.session; fields: page.screen; only: page.rooms }
    }
    FieldGroup {
        title: qsTr("Shadow")
        FieldList { session: page.session; fields: page.screen; only: page.shadows }
    }
    FieldGroup {
        title: qsTr("Border")
        FieldList { session: page.session; fields: page.screen; without: ["frame", "frameTint"].concat(page.rooms, page.shadows) }
    }
}
