import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Theme

// What a hand on the film's picture does, and how the picture is shown.
Column {
    id: tools

    required property FilmHandles handles
    readonly property alias isActual: actual.checked

    spacing: 2
    Accessible.role: Accessible.ToolBar
    Accessible.name: qsTr("On the film")

    component Tool: ToolButton {
        required property string tool

        checked: tools.handles.tool === tool
        // The keys, Escape above all, are the picture's from now on.
        onClicked: { tools.handles.tool = tool; tools.handles.forceActiveFocus() }
        Accessible.checkable: true
        Accessible.checked: checked
    }
    Tool { tool: "select"; icon.source: Theme.icon("cursor"); ToolTip.text: qsTr("Select and move (Esc)") }
    Tool { tool: "hide"; icon.source: Theme.icon("eye-slash"); ToolTip.text: qsTr("Draw an area to hide") }
    Tool { tool: "crop"; icon.source: Theme.icon("crop"); ToolTip.text: qsTr("Crop the recording") }
    ToolButton {
        visible: tools.handles.tool === "crop"
        enabled: tools.handles.cropped
        icon.source: Theme.icon("arrow-counterclockwise")
        ToolTip.text: qsTr("Show all of the recording again")
        onClicked: { tools.handles.clearCrop(); tools.handles.forceActiveFocus() }
    }
    Item { width: 1; height: 8 }
    ToolButton {
        icon.source: Theme.icon("circle-half")
        checked: tools.handles.comparing
        ToolTip.text: qsTr("Show the take as it was recorded (hold \\)")
        onClicked: tools.handles.comparing = !tools.handles.comparing
        Accessible.checkable: true
        Accessible.checked: checked
    }
    ToolButton {
        id: actual

        icon.source: Theme.icon("aspect-ratio")
        checkable: true
        ToolTip.text: checked ? qsTr("Fit the film into its room") : qsTr("Show the film at 100 %")
    }
}
