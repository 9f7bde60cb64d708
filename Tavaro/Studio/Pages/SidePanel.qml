import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Theme

// Beside the film: a rail of pages, and the open one. What is selected has a page that opens by itself.
Rectangle {
    id: panel

    property EditorDesk desk: null
    readonly property EditorSession session: desk?.session ?? null

    // Each is a file with a `desk`, or several to choose from; `stays` where a selection opens no other page.
    readonly property var pages: [
        { name: "selection", title: qsTr("Selection"), icon: "sliders", source: "SelectionPanel.qml" },
        { name: "background", title: qsTr("Background, frame and canvas"), icon: "image", views: [
            { title: qsTr("Background"), source: "BackgroundPanel.qml" },
            { title: qsTr("Frame"), source: "FramePanel.qml" },
            { title: qsTr("Canvas"), source: "CanvasPanel.qml" },
        ] },
        { name: "screen", title: qsTr("Zooms and crop"), icon: "zoom-in", source: "ScreenPanel.qml" },
        { name: "privacy", title: qsTr("Privacy"), icon: "shield-lock", stays: true, views: [
            { title: qsTr("Findings"), source: "PrivacyPanel.qml" },
            { title: qsTr("What to find"), source: "PrivacyKinds.qml" },
        ] },
        { name: "cursor", title: qsTr("Pointer and clicks"), icon: "cursor", source: "PointerPanel.qml" },
        { name: "camera", title: qsTr("Camera"), icon: "person-video", source: "CameraPanel.qml" },
        { name: "overlays", title: qsTr("Texts, keys and cards"), icon: "textarea-t", views: [
            { title: qsTr("Over the film"), source: "OverlaysPanel.qml" },
            { title: qsTr("Cards"), source: "CardsPanel.qml" },
        ] },
        { name: "transcript", title: qsTr("Transcript"), icon: "cursor-text", source: "TranscriptPanel.qml", stays: true },
        { name: "captions", title: qsTr("Captions"), icon: "badge-cc", stays: true, views: [
            { title: qsTr("Words"), source: "CaptionsPanel.qml" },
            { title: qsTr("Looks"), source: "CaptionLookPanel.qml" },
        ] },
        { name: "script", title: qsTr("Script and voice"), icon: "mic", stays: true, views: [
            { title: qsTr("Script"), source: "ScriptPanel.qml" },
            { title: qsTr("Voice"), source: "VoicePanel.qml" },
        ] },
        { name: "sound", title: qsTr("Sound and voice-over"), icon: "volume-up", source: "SoundPanel.qml" },
        { name: "polish", title: qsTr("Auto Polish"), icon: "magic", source: "PolishPanel.qml", stays: true },
        { name: "steps", title: qsTr("Steps"), icon: "clock-history", source: "StepsPanel.qml", stays: true },
    ]
    readonly property var seenViews: ({}) // the view that a page had last
    property bool isFolded: false
    property bool isOnSelection: false
    readonly property var chosen: pages.find(each => each.name === session?.inspector) ?? pages[1]
    readonly property var open: isOnSelection && !chosen.stays ? pages[0] : chosen

    readonly property string shown: isFolded ? "" : open.name

    function choose(name: string) {
        isFolded = !isFolded && name === open.name;
        isOnSelection = false;
        session.inspector = name;
    }
    function show() {
        if (page.item?.views) seenViews[page.item.objectName] = page.item.view;
        page.setSource("");
        if (!desk || isFolded) return;
        const views = { desk: desk, views: open.views, view: seenViews[shown] ?? 0, objectName: shown };
        page.setSource(open.source ?? "PanelViews.qml", open.views ? views : { desk: desk });
    }

    implicitWidth: isFolded ? rail.width : 348
    color: Theme.colors.surface
    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Side panel")

    onDeskChanged: show()
    onShownChanged: show()

    Connections {
        target: panel.session
        function onSelectionChanged() { panel.isOnSelection = panel.session.selection.length > 0 }
        function onInspectorChanged() { panel.isOnSelection = false }
    }
    Shortcut { sequence: "Ctrl+I"; onActivated: panel.isFolded = !panel.isFolded }

    Rectangle { width: 1; height: parent.height; color: Theme.colors.line }
    Loader {
        id: page

        anchors { left: parent.left; leftMargin: 1; right: rail.left; top: parent.top; bottom: parent.bottom }
        Accessible.role: Accessible.Pane
        Accessible.name: panel.open.title
    }
    ListView {
        id: rail

        anchors { right: parent.right; top: parent.top; bottom: parent.bottom; topMargin: 4 }
        width: 45
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        model: panel.pages
        header: ToolButton {
            x: 6
            height: 30
            icon.source: Theme.icon("layout-sidebar-reverse")
            ToolTip.text: panel.isFolded ? qsTr("Show the side panel (Ctrl+I)") : qsTr("Hide the side panel (Ctrl+I)")
            onClicked: panel.isFolded = !panel.isFolded
        }
        delegate: ToolButton {
            required property int index
            required property var modelData

            x: 6
            height: 30
            checked: !panel.isFolded && panel.open.name === modelData.name
            icon.source: Theme.icon(modelData.icon)
            ToolTip.text: modelData.title
            onClicked: panel.choose(modelData.name)
            onActiveFocusChanged: if (activeFocus) rail.positionViewAtIndex(index, ListView.Contain)
        }
        Accessible.role: Accessible.PageTabList
        Accessible.name: qsTr("Pages of the side panel")
        Rectangle { width: 1; height: parent.height; color: Theme.colors.line }
        ScrollBar.vertical: ScrollBar { interactive: false }
    }
}
