import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Program
import Tavaro.Style
import Tavaro.Theme

// One open project: its film above, its timeline below.
Item {
    id: page

    required property int row
    // The row of the list that the page is about.
    readonly property var project: rows.count > row && row >= 0 ? rows.objectAt(row) : null
    readonly property string name: project?.name ?? ""
    readonly property EditorDesk desk: project?.desk ?? null
    readonly property EditorSession session: desk?.session ?? null

    property EditorDesk shown: null
    signal shortcutsWanted

    function show() {
        if (shown === desk) return;
        if (shown) shown.showIn(null);
        shown = desk;
        if (!desk) return;
        desk.setDark(Theme.isDark);
        desk.showIn(timeline.item);
    }

    function want(command: string) {
        if (command === "speed") speed.ask();
        else if (command === "rename") title.rename();
        else if (command === "shortcuts") shortcutsWanted();
    }
    function showMenu(area: Item, x: double, y: double, place: string) {
        context.names = session.menu(place);
        context.popup(area, x, y);
    }

    onDeskChanged: show()
    Component.onCompleted: show()
    Component.onDestruction: if (shown) shown.showIn(null)

    Instantiator {
        id: rows

        model: Studio.projects
        QtObject {
            required property string name
            required property string length
            required property EditorDesk desk
        }
    }
    Connections {
        target: Theme
        function onChanged() { if (page.desk) page.desk.setDark(Theme.isDark) }
    }
    Connections {
        target: page.session
        function onTold(sentence: string) { Studio.failed(sentence) }
        function onWanted(command: string) { page.want(command) }
    }
    Connections {
        target: timeline.item
        function onMenuWanted(x: double, y: double, place: string) { page.showMenu(timeline.item, x, y, place) }
    }
    CommandMenu { id: context; session: page.session }
    SpeedDialog { id: speed; session: page.session }
    EditorShortcuts { session: page.session; playback: page.desk?.preview.playback ?? null }
    ExportActions { session: page.session }
    Shortcut { sequences: [StandardKey.Close]; onActivated: Studio.projects.close(page.row) }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        RowLayout {
            Layout.fillWidth: true
            Layout.margins: 12
            Layout.leftMargin: Theme.pageMargin
            spacing: 4

            ProjectTitle {
                id: title

                Layout.maximumWidth: page.width / 2
                name: page.name
                session: page.session
            }
            Label {
                Layout.fillWidth: true
                Layout.leftMargin: 8
                text: page.session?.polish.isRunning ? qsTr("Polishing…") :
                      page.desk?.privacy.run.isRunning ? qsTr("Looking for private text, %1").arg(page.desk.privacy.run.state) :
                      page.project?.length ?? ""
                elide: Text.ElideRight
                color: Theme.colors.secondaryText
            }
            ToolButton {
                id: all

                icon.source: Theme.icon("list")
                ToolTip.text: qsTr("All commands")
                onClicked: commands.popup(all, 0, all.height)

                EditorMenu { id: commands; session: page.session }
            }
            EditorButton { session: page.session; name: "undo"; picture: "arrow-counterclockwise"; detail: page.session?.undoName ?? "" }
            EditorButton { session: page.session; name: "redo"; picture: "arrow-clockwise"; detail: page.session?.redoName ?? "" }
            EditorButton { session: page.session; name: "polish"; picture: "magic"; display: AbstractButton.TextBesideIcon }
            Button {
                readonly property EditorCommand command: page.session?.command("export") ?? null

                Layout.leftMargin: 8
                text: qsTr("Export")
                icon.source: Theme.icon("upload")
                highlighted: true
                enabled: command?.enabled ?? false
                ToolTip.text: qsTr("Export… (%1)").arg(command?.shortcut ?? "")
                ToolTip.visible: hovered
                ToolTip.delay: 600
                onClicked: command.trigger()
            }
        }
        RowLayout {
            spacing: 0
            FilmArea {
                id: film

                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.minimumHeight: 160
                desk: page.desk
                name: page.name

                TapHandler {
                    acceptedButtons: Qt.RightButton
                    onTapped: point => page.showMenu(film, point.position.x, point.position.y, "film")
                }
            }
            SidePanel {
                Layout.fillHeight: true
                desk: page.desk
            }
        }
        TransportBar {
            Layout.fillWidth: true
            desk: page.desk
        }
        TimelineArea {
            id: timeline

            Layout.fillWidth: true
            Layout.preferredHeight: Math.max(180, page.height * 0.36)
        }
    }
}
