import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Theme

// The camera's picture: where it is, how it looks, what it does by itself.
SidePage {
    id: page

    required property EditorDesk desk
    readonly property EditorSession session: desk.session
    readonly property InspectorModel fields: session.fieldsOf("camera")
    readonly property var places: ["position", "size", "padding", "fillsCanvas"]
    readonly property var looks: ["lookStrength", "lutAsset", "sharpen"]
    readonly property var borders: ["shadowOpacity", "borderWidth", "borderColor"]
    readonly property var faces: ["crop", "mirrored", "cutout", "tracksFace", "faceZoom"]

    title: qsTr("Camera")

    FieldList { session: page.session; fields: page.fields; only: ["isEnabled", "shape"] }
    PlaceGrid { fields: page.fields; path: "placement" }
    FieldList { session: page.session; fields: page.fields; only: page.places }
    FieldGroup {
        title: qsTr("Look")
        LookGrid { desk: page.desk; section: "camera"; path: "look"; subject: "camera" }
        FieldList { session: page.session; fields: page.fields; only: page.looks }
    }
    FieldGroup {
        title: qsTr("Shadow and border")
        FieldList { session: page.session; fields: page.fields; only: page.borders }
    }
    FieldGroup {
        title: qsTr("Picture")
        FieldList { session: page.session; fields: page.fields; only: page.faces }
    }
    FieldGroup {
        title: qsTr("By itself")
        FieldList { session: page.session; fields: page.fields; without: page.places.concat(["isEnabled", "shape", "placement", "look"], page.looks, page.borders, page.faces) }
        FieldList { session: page.session; fields: page.session.fieldsOf("project"); only: ["cameraDirectorStyle", "cameraOffset"] }
    }
    FieldGroup {
        title: qsTr("Scenes and moves")
        AddRow { session: page.session; names: ["addScene", "addCameraMove"] }
        ItemRows { session: page.session; kind: "scene"; empty: qsTr("No scene changes.") }
        ItemRows { session: page.session; kind: "cameraMove"; empty: qsTr("No camera moves.") }
    }
}
