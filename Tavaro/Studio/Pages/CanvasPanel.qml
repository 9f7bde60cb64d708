import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Theme

// The shape of the film, how screen and camera share it, and what the project is.
SidePage {
    id: page

    required property EditorDesk desk
    readonly property EditorSession session: desk.session
    readonly property InspectorModel project: session.fieldsOf("project")
    readonly property size canvas: project.values.canvas ?? Qt.size(0, 0)

    Grid {
        id: shapes

        Layout.fillWidth: true
        columns: 3
        columnSpacing: 6
        rowSpacing: 6
        Repeater {
            model: [
                { title: qsTr("Wide"), width: 1920, height: 1080 },
                { title: qsTr("Upright"), width: 1080, height: 1920 },
                { title: qsTr("Square"), width: 1080, height: 1080 },
                { title: qsTr("Portrait"), width: 1080, height: 1350 },
                { title: qsTr("Classic"), width: 1440, height: 1080 },
                { title: qsTr("Cinema"), width: 2560, height: 1080 },
            ]
            ShapeButton {
                required property var modelData

                width: (shapes.width - 2 * shapes.columnSpacing) / 3
                text: modelData.title
                shape: Qt.size(modelData.width, modelData.height)
                checked: page.canvas.width * shape.height === page.canvas.height * shape.width
                onClicked: page.project.set("canvas", shape)
            }
        }
    }
    FieldList { session: page.session; fields: page.project; only: ["canvas"] }
    FieldGroup {
        title: qsTr("Screen and camera")
        LookGrid { desk: page.desk; section: "layout"; path: ""; subject: "film"; columns: 2 }
        LookGrid {
            visible: fields.values[""] === "split"
            desk: page.desk
            section: "layout"
            path: "split.arrangement"
            subject: "film"
            columns: 4
        }
        FieldList { session: page.session; fields: page.session.fieldsOf("layout"); without: ["", "split.arrangement"] }
    }
    FieldGroup {
        title: qsTr("Project")
        FieldList { session: page.session; fields: page.project; without: ["canvas", "cameraOffset", "cameraDirectorStyle", "sourceCrop"] }
    }
    FieldGroup {
        title: qsTr("Exported film")
        isFolded: true
        FieldList { session: page.session; fields: page.session.fieldsOf("export"); without: ["includeWatermark"] }
    }
}
