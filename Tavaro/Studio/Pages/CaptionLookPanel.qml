import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Theme

// How captions look; their texts have a page of their own.
SidePage {
    id: page

    required property EditorDesk desk
    readonly property EditorSession session: desk.session
    readonly property InspectorModel fields: session.fieldsOf("captions")

    AddRow { session: page.session; names: ["addCaption", "makeCaptions"] }
    FieldList { session: page.session; fields: page.fields; only: ["isEnabled"] }
    LookGrid { desk: page.desk; section: "captions"; path: "style"; subject: "captions"; columns: 2 }
    FieldGroup {
        title: qsTr("Letters")
        FieldList { session: page.session; fields: page.fields; without: ["isEnabled", "style", "position", "reveal", "animation"] }
    }
    FieldGroup {
        title: qsTr("Place and motion")
        FieldList { session: page.session; fields: page.fields; only: ["position", "reveal", "animation"] }
    }
}
