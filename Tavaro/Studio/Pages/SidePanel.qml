import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Theme

// Beside the film: a rail of pages, and the open one. What is selected has a page that opens by itself.
Rectangle {
    id: panel

    property EditorDesk desk: null
    readonly property EditorSession session: desk?.session ?? null

    // Each is a file with a `desk`; `stays` where a selection opens no other page.
    readonly property var pages: [
        { name: "selection", title: qsTr("Selection"), icon: "sliders", source: "SelectionPanel.qml" },
        { name: "background", title: qsTr("Background and frame"), icon: "image", source: "BackgroundPanel.qml" },
        { name: "canvas", title: qsTr("Canvas"), icon: "aspect-ratio", source: "CanvasPanel.qml" },
        { name: "screen", title: qsTr("Zooms and crop"), icon: "zoom-in", source: "ScreenPanel.qml" },
        { name: "cursor", title: qsTr("Pointer and clicks"), icon: "cursor", source: "PointerPanel.qml" },
        { name: "camera", title: qsTr("Camera"), icon: "person-video", source: "CameraPanel.qml" },
        { name: "overlays", title: qsTr("Texts, keys and shapes"), icon: "keyboard", source: "OverlaysPanel.qml" },
        { name: "transcript", title: qsTr("Transcript"), icon: "cursor-text", source: "TranscriptPanel.qml", stays: true },
        { name: "captionTexts", title: qsTr("Captions"), icon: "badge-cc", source: "CaptionsPanel.qml", stays: true },
        { name: "captions", title: qsTr("Looks of captions"), icon: "palette", source: "CaptionLookPanel.qml" },
        { name: "sound", title: qsTr("Sound and voice-over"), icon: "volume-up", source: "SoundPanel.qml" },
        { name: "privacy", title: qsTr("Privacy"), icon: "shield-lock", source: "PrivacyPanel.qml" },
        { name: "cards", title: qsTr("Cards and watermark"), icon: "textarea-t", source: "CardsPanel.qml" },
        { name: "polish", title: qsTr("Auto Polish"), icon: "magic", source: "PolishPanel.qml", stays: true },
        { name: "steps", title: qsTr("Steps"), icon: "clock-history", source: "StepsPanel.qml", stays: true },
    ]
    property bool isFolded: false
    property bool isOnSelection: false
    readonly property var chosen: pages.find(each => each.name === session?.inspector) ?? pages[1]
    readonly property var open: isOnSelection && !chosen.stays ? pages[0] : chosen

    readonly property string source: isFolded ? "" : open.source

    function choose(name: string) {
        isFolded = !isFolded && name === open.name;
        isOnSelection = false;
        session.inspector = name;
    }
    function show() {
        page.setSource("");
        if (desk && source) page.setSource(source, { desk: desk });
    }

    implicitWidth: isFolded ? rail.width : 348
    color: Theme.colors.surface
    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Side panel")

    onDeskChanged: show()
    onSourceChanged: show()

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

        anchors { right: parent.right; top: parent.top; bottom: parent.bottom; topMargin: 6 }
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
            required property var modelData

            x: 6
            height: 30
            checked: !panel.isFolded && panel.open.name === modelData.name
            icon.source: Theme.icon(modelData.icon)
            ToolTip.text: modelData.title
            onClicked: panel.choose(modelData.name)
        }
        Accessible.role: Accessible.PageTabList
        Accessible.name: qsTr("Pages of the side panel")
        Rectangle { width: 1; height: parent.height; color: Theme.colors.line }
        ScrollBar.vertical: ScrollBar { interactive: false }
    }
}
