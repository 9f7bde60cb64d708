import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Style
import Tavaro.Theme

// Auto Polish: what it is to do, its run, and what came of it.
SidePage {
    id: page

    required property EditorDesk desk
    readonly property EditorSession session: desk.session
    readonly property PolishRun run: session.polish

    title: qsTr("Auto Polish")

    Label {
        Layout.fillWidth: true
        text: qsTr("Turns the take into a first edit. What you made yourself stays; what an earlier run made is made anew.")
        wrapMode: Text.Wrap
        color: Theme.colors.secondaryText
    }
    FieldList { session: page.session; fields: page.session.fieldsOf("project"); only: ["mode", "cameraDirectorStyle"] }
    Button {
        readonly property EditorCommand command: page.session.command("polish")

        Layout.fillWidth: true
        highlighted: true
        visible: !page.run.isRunning
        enabled: command.enabled
        icon.source: Theme.icon("magic")
        text: qsTr("Polish this film")
        onClicked: command.trigger()
    }
    RowLayout {
        visible: page.run.isRunning
        spacing: 10
        ProgressBar {
            Layout.fillWidth: true
            indeterminate: true
            Accessible.name: qsTr("Polishing")
        }
        Button {
            text: qsTr("Stop")
            Accessible.name: qsTr("Stop polishing")
            onClicked: page.run.cancel()
        }
    }
    Card {
        Layout.fillWidth: true
        visible: page.run.report.length > 0 && !page.run.isRunning
        implicitHeight: report.implicitHeight + 20
        color: Theme.colors.sunken
        ColumnLayout {
            id: report

            anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter; margins: 12 }
            spacing: 4
            Rows {
                spacing: 4
                model: page.run.report
                RowLayout {
                    id: line

                    required property string modelData

                    spacing: 8
                    Icon { icon: "check"; color: Theme.colors.good }
                    Label { Layout.fillWidth: true; text: line.modelData; wrapMode: Text.Wrap }
                }
            }
            Label {
                Layout.fillWidth: true
                text: qsTr("What you made yourself stayed. One undo takes this back.")
                wrapMode: Text.Wrap
                color: Theme.colors.secondaryText
                font.pixelSize: Theme.captionSize
            }
        }
    }
    FieldGroup {
        title: qsTr("What it does")
        Rows {
            spacing: 8
            model: page.run.switches.length
            RowLayout {
                id: part

                required property int index
                readonly property var modelData: page.run.switches[index]

                Label { Layout.fillWidth: true; text: part.modelData.label; Accessible.ignored: true }
                Switch {
                    checked: part.modelData.isOn
                    enabled: !page.run.isRunning
                    Accessible.name: part.modelData.label
                    onToggled: page.run.setSwitch(part.modelData.name, checked)
                }
            }
        }
    }
}
