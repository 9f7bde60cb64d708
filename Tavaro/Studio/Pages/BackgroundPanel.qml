import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Theme

// What is behind the recording, and how it is framed.
SidePage {
    id: page

    required property EditorDesk desk
    readonly property EditorSession session: desk.session
    readonly property InspectorModel behind: session.fieldsOf("background")
    readonly property InspectorModel screen: session.fieldsOf("screen")

    title: qsTr("Background and frame")

    BackgroundGallery { desk: page.desk }
    FieldList { session: page.session; fields: page.behind; without: [""] }
    FieldGroup {
        title: qsTr("Frame")
        LookGrid { desk: page.desk; section: "screen"; path: "frame"; subject: "film" }
        FieldList { session: page.session; fields: page.screen; only: ["frameTint"] }
    }
    FieldGroup {
        title: qsTr("Room and corners")
        FieldList { session: page.session; fields: page.screen; only: ["padding", "cornerRadius", "inset", "insetColor"] }
    }
    FieldGroup {
        title: qsTr("Shadow")
        FieldList { session: page.session; fields: page.screen; only: ["shadowRadius", "shadowOpacity", "shadowOffsetY"] }
    }
    FieldGroup {
        title: qsTr("Border")
        FieldList {
            session: page.session
            fields: page.screen
            without: ["frame", "frameTint", "padding", "cornerRadius", "inset", "insetColor", "shadowRadius", "shadowOpacity", "shadowOffsetY"]
        }
    }
}
