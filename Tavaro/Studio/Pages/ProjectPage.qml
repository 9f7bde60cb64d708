import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Program
import Tavaro.Style
import Tavaro.Theme

// One open project.
Item {
    id: page

    required property int row
    // The row of the list that the page is about.
    readonly property var project: rows.count > row && row >= 0 ? rows.objectAt(row) : null
    readonly property string name: project?.name ?? ""

    Instantiator {
        id: rows

        model: Studio.projects
        QtObject {
            required property string name
            required property string length
            required property string still
            required property string undoName
            required property string redoName
        }
    }
    Shortcut { sequences: [StandardKey.Undo]; onActivated: Studio.projects.undo(page.row) }
    Shortcut { sequences: [StandardKey.Redo]; onActivated: Studio.projects.redo(page.row) }
    Shortcut { sequences: [StandardKey.Close]; onActivated: Studio.projects.close(page.row) }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        RowLayout {
            Layout.fillWidth: true
            Layout.margins: 16
            Layout.leftMargin: Theme.pageMargin
            spacing: 4

            Label {
                text: page.name
                font { pixelSize: Theme.headingSize; weight: Font.DemiBold }
                elide: Text.ElideRight
                Layout.maximumWidth: page.width / 2
                Accessible.role: Accessible.Heading
            }
            Label {
                Layout.fillWidth: true
                Layout.leftMargin: 8
                text: page.project?.length ?? ""
                color: Theme.colors.secondaryText
            }
            ToolButton {
                enabled: !!page.project?.undoName
                icon.source: Theme.icon("arrow-counterclockwise")
                ToolTip.text: enabled ? qsTr("Undo %1").arg(page.project.undoName) : qsTr("Undo")
                onClicked: Studio.projects.undo(page.row)
            }
            ToolButton {
                enabled: !!page.project?.redoName
                icon.source: Theme.icon("arrow-clockwise")
                ToolTip.text: enabled ? qsTr("Redo %1").arg(page.project.redoName) : qsTr("Redo")
                onClicked: Studio.projects.redo(page.row)
            }
        }
        Rectangle {
            Layout.fillWidth: true
            Layout.fillHeight: true
            color: Theme.colors.sunken
            Image {
                anchors { fill: parent; margins: 24 }
                asynchronous: true
                fillMode: Image.PreserveAspectFit
                source: page.project?.still ?? ""
                Accessible.role: Accessible.Graphic
                Accessible.name: qsTr("A still of %1").arg(page.name)
            }
        }
    }
}
