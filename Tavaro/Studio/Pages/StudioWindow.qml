import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Library
import Tavaro.Program
import Tavaro.Recorder
import Tavaro.Style
import Tavaro.Theme

ApplicationWindow {
    id: window

    // What is shown: "library", "record", "exports", "settings", or "project" of that row of the open ones.
    property string place: "library"
    property int project: -1
    readonly property RecorderModel recorder: Studio.recorder.recorder

    function goTo(place: string, project: int) {
        window.project = project;
        window.place = place;
    }

    title: place === "project" && page.item ? qsTr("%1 – Tavaro").arg(page.item.name) : qsTr("Tavaro")
    width: 1280
    height: 800
    minimumWidth: 820
    minimumHeight: 520
    visible: true
    visibility: Studio.beginsMinimized ? Window.Minimized : Window.AutomaticVisibility
    onClosing: Studio.windowClosed()
    onActiveChanged: if (active) Library.refresh()

    Shortcut { sequences: ["Ctrl+1"]; onActivated: window.goTo("library", -1) }
    Shortcut { sequences: ["Ctrl+2", StandardKey.New]; onActivated: window.goTo("record", -1) }
    Shortcut { sequences: ["Ctrl+3"]; onActivated: window.goTo("exports", -1) }
    Shortcut { sequences: ["Ctrl+,"]; onActivated: window.goTo("settings", -1) }
    Shortcut { sequences: ["Ctrl+?"]; onActivated: shortcuts.open() }
    Shortcut { sequence: "F1"; enabled: window.place !== "project"; onActivated: shortcuts.open() }
    Shortcut { sequences: ["Ctrl+Q"]; onActivated: window.close() }

    Connections {
        id: raising

        property bool wasMinimized: false // before it was raised last

        target: Studio
        function onRaised() {
            wasMinimized = window.visibility === Window.Minimized;
            if (wasMinimized) window.showNormal(); else window.show();
            window.raise();
            window.requestActivate();
        }
        function onCloseWanted() { window.close() }
        function onPlaceWanted(place: string) { window.goTo(place, -1) }
        function onFailed(sentence: string) { failure.tell(sentence) }
    }
    // The window is no part of a film that it makes of a whole display, nor of its first frames.
    Connections {
        property int before: Window.Hidden

        target: window.recorder
        function onRemarked(sentences: string) { toast.say(null, sentences, "") }
        function onFailureChanged() {
            if (window.recorder.failure && window.place !== "record") failure.tell(window.recorder.failure);
        }
        function onChanged() {
            const isOurs = window.recorder.startedBy === "", phase = window.recorder.phase;
            const isFilming = phase === RecorderModel.Countdown || phase === RecorderModel.Recording;
            if (isOurs && isFilming && before === Window.Hidden) {
                before = window.visibility;
                window.showMinimized();
            } else if (before !== Window.Hidden && !isFilming && phase !== RecorderModel.Paused) {
                window.visibility = before;
                window.requestActivate(); // else the keyboard stays with whatever was in front meanwhile
                before = Window.Hidden;
            }
        }
    }
    Connections {
        target: Studio.projects
        function onOpened(row: int) { window.goTo("project", row) }
        function onRowsAboutToBeRemoved(parent, first: int) {
            if (window.project === first) window.goTo("library", -1);
            else if (window.project > first) window.project -= 1;
        }
    }
    Connections {
        target: Library
        function onSaid(text: string, action: string) { toast.say(Library, text, action) }
    }
    Connections {
        target: Studio.exports
        function onSaid(text: string, action: string) { toast.say(Studio.exports, text, action) }
    }
    Binding { target: Studio.exports; property: "isWatched"; value: window.active }

    RowLayout {
        anchors.fill: parent
        spacing: 0

        Sidebar {
            Layout.fillHeight: true
            place: window.place
            project: window.project
            onChosen: (place, project) => window.goTo(place, project)
        }
        Loader {
            id: page

            Layout.fillWidth: true
            Layout.fillHeight: true
            sourceComponent: ({ library: library, record: record, exports: exports, settings: settings, project: projectPage })[window.place]
        }
    }

    Component { id: library; LibraryPage { onRecord: window.goTo("record", -1) } }
    Component { id: record; RecorderPage { recorder: window.recorder; keys: Studio.recorder.keys; firstTake: Studio.recorder.firstTake } }
    Component { id: exports; ExportsPage { queue: Studio.exports.queue } }
    Component { id: settings; SettingsPage {} }
    Component { id: projectPage; ProjectPage { row: window.project; onShortcutsWanted: shortcuts.open() } }

    ArrivalArea { anchors.fill: parent }
    Toast {
        id: toast

        property var speaker: null

        function say(speaker, text: string, action: string) {
            if (this.speaker !== speaker) end();
            this.speaker = speaker;
            this.text = text;
            actionText = action;
            show();
        }

        anchors { bottom: parent.bottom; bottomMargin: 24; horizontalCenter: parent.horizontalCenter }
        onTriggered: speaker.accept()
        onEnded: if (speaker === Library) Library.lapse()
    }
    // An agent's question brings the window up; whoever wanted it out of the way has it so again.
    ConsentDialog { onClosed: if (raising.wasMinimized && !isAsking) window.showMinimized() }
    RecorderBarWindow { recorder: window.recorder; model: Studio.recorder.bar }
    ExportsWindow {
        queue: Studio.exports.queue
        visible: Studio.isClosed && queue.activeCount > 0
        onWanted: Studio.bringBack()
    }
    FailureDialog { id: failure }
    ShortcutSheet { id: shortcuts }
}
