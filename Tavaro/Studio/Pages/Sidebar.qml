import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Library
import Tavaro.Program
import Tavaro.Settings
import Tavaro.Style
import Tavaro.Theme

// Where one can go: the library, what is open, the settings; and what goes on meanwhile.
Rectangle {
    id: sidebar

    required property string place
    required property int project
    signal chosen(string place, int project)

    implicitWidth: 224
    color: Theme.colors.sidebar
    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Places")

    Rectangle {
        anchors { right: parent.right; top: parent.top; bottom: parent.bottom }
        width: 1
        color: Theme.colors.line
    }
    ColumnLayout {
        anchors { fill: parent; margins: 12 }
        spacing: 2

        Label {
            text: qsTr("Tavaro")
            font { pixelSize: Theme.headingSize; weight: Font.Bold }
            Layout.margins: 12
            Layout.topMargin: 10
            Layout.bottomMargin: 14
        }
        NavigationButton {
            Layout.fillWidth: true
            text: qsTr("Library")
            icon.source: Theme.icon("collection-play")
            checked: sidebar.place === "library"
            autoExclusive: false
            checkable: false
            onClicked: sidebar.chosen("library", -1)
        }
        NavigationButton {
            Layout.fillWidth: true
            text: qsTr("Record")
            icon.source: Theme.icon("record-circle")
            checked: sidebar.place === "record"
            autoExclusive: false
            checkable: false
            onClicked: sidebar.chosen("record", -1)
        }
        NavigationButton {
            Layout.fillWidth: true
            text: qsTr("Exports")
            icon.source: Theme.icon("upload")
            checked: sidebar.place === "exports"
            autoExclusive: false
            checkable: false
            onClicked: sidebar.chosen("exports", -1)
        }
        Label {
            visible: Studio.projects.count > 0
            text: qsTr("Open")
            color: Theme.colors.secondaryText
            font { pixelSize: Theme.captionSize; weight: Font.DemiBold }
            Layout.leftMargin: 12
            Layout.topMargin: 18
            Layout.bottomMargin: 4
        }
        RowList {
            id: projects

            Layout.fillWidth: true
            Layout.fillHeight: true
            spacing: 2
            model: Studio.projects
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Open projects")
            Accessible.ignored: count === 0
            delegate: Item {
                id: row

                required property int index
                required property string name

                width: projects.width
                height: Theme.rowHeight
                NavigationButton {
                    anchors.fill: parent
                    rightPadding: 36
                    text: row.name
                    icon.source: Theme.icon("film")
                    checked: sidebar.place === "project" && sidebar.project === row.index
                    autoExclusive: false
                    checkable: false
                    onClicked: sidebar.chosen("project", row.index)
                }
                ToolButton {
                    anchors { right: parent.right; rightMargin: 6; verticalCenter: parent.verticalCenter }
                    implicitWidth: 24
                    implicitHeight: 24
                    padding: 0
                    icon { source: Theme.icon("x-lg"); width: 10; height: 10; color: Theme.colors.secondaryText }
                    ToolTip.text: qsTr("Close %1").arg(row.name)
                    onClicked: Studio.projects.close(row.index)
                }
            }
        }
        ExportActivity { Layout.fillWidth: true; Layout.bottomMargin: 8; queue: Studio.exports.queue }
        TerminalTakeList { Layout.fillWidth: true; Layout.fillHeight: false; takes: Studio.recorder.terminals }
        ActivityList { Layout.fillWidth: true; Layout.fillHeight: false }
        NavigationButton {
            Layout.fillWidth: true
            text: qsTr("Settings")
            Accessible.name: Updates.isAvailable ? qsTr("Settings, %1").arg(Updates.text) : text
            icon.source: Theme.icon("gear")
            checked: sidebar.place === "settings"
            autoExclusive: false
            checkable: false
            onClicked: sidebar.chosen("settings", -1)
            Rectangle {
                anchors { right: parent.right; rightMargin: 12; verticalCenter: parent.verticalCenter }
                width: 8
                height: 8
                radius: 4
                visible: Updates.isAvailable
                color: Theme.colors.accent
            }
        }
    }
}
