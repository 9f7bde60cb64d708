import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Style
import Tavaro.Theme

// The built-in backgrounds by their families, none at all, and an own picture or film.
ColumnLayout {
    id: gallery

    required property EditorDesk desk
    readonly property EditorSession session: desk.session
    readonly property InspectorModel fields: session.fieldsOf("background")
    readonly property var presets: session.backgroundPresets()
    readonly property var families: presets.map(each => each.familyTitle).filter((each, i, all) => all.indexOf(each) === i)
    property string wanted

    function take(file: url) {
        wanted = NumberText.path(file);
        session.importFile(wanted);
    }

    Layout.fillWidth: true
    spacing: 4

    RowLayout {
        spacing: 6
        Button {
            Layout.fillWidth: true
            implicitHeight: 28
            icon.source: Theme.icon("image")
            text: qsTr("Own picture or film…")
            onClicked: dialog.open()
        }
        Button {
            implicitHeight: 28
            text: qsTr("None")
            Accessible.name: qsTr("No background")
            checked: gallery.fields.values[""] === "none"
            onClicked: gallery.fields.set("", "none")
        }
    }
    Rows {
        spacing: gallery.spacing
        model: gallery.families
        ColumnLayout {
            id: family

            required property string modelData
            readonly property var members: gallery.presets.filter(each => each.familyTitle === modelData)

            spacing: 2
            Label {
                Layout.topMargin: 4
                text: family.modelData
                color: Theme.colors.secondaryText
                font.pixelSize: Theme.captionSize
            }
            Flow {
                Layout.fillWidth: true
                spacing: 2
                Repeater {
                    model: family.members
                    LookTile {
                        required property var modelData

                        width: Math.floor((gallery.width - 8) / 5)
                        pictureHeight: 36
                        isNamed: false
                        desk: gallery.desk
                        subject: "background"
                        text: modelData.name
                        changes: ({ "background.preset": modelData.id })
                        checked: gallery.session.backgroundPreset === modelData.id
                        onClicked: gallery.session.setBackground(modelData.id)
                    }
                }
            }
        }
    }
    FileDialog {
        id: dialog

        title: qsTr("A picture or film behind the recording")
        onAccepted: gallery.take(selectedFile)
    }
    Connections {
        target: gallery.session
        function onImported(path: string, asset: string) {
            if (path !== gallery.wanted) return;
            gallery.wanted = "";
            gallery.fields.set("", { image: { assetName: asset } });
        }
    }
}
