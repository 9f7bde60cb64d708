import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Theme

// What lies over the film: titles, pressed keys, arrows and other shapes.
SidePage {
    id: page

    required property EditorDesk desk
    readonly property EditorSession session: desk.session

    Flow {
        Layout.fillWidth: true
        spacing: 6
        Repeater {
            model: [
                { name: "title", text: qsTr("Title") }, { name: "callout", text: qsTr("Callout") },
                { name: "keycap", text: qsTr("Keys") }, { name: "command", text: qsTr("Command") },
                { name: "code", text: qsTr("Code") }, { name: "arrow", text: qsTr("Arrow") },
                { name: "box", text: qsTr("Box") }, { name: "highlight", text: qsTr("Highlight") },
                { name: "blur", text: qsTr("Blur") }, { name: "mask", text: qsTr("Cover") },
            ]
            Button {
                required property var modelData

                implicitHeight: 28
                horizontalPadding: 10
                enabled: page.session.duration > 0
                text: modelData.text
                Accessible.name: qsTr("Add %1").arg(modelData.text)
                onClicked: page.session.add("overlay", modelData.name)
            }
        }
    }
    ItemRows {
        session: page.session
        kind: "overlay"
        empty: qsTr("Nothing lies over the film yet. Auto Polish shows the keys that were pressed.")
    }
}
