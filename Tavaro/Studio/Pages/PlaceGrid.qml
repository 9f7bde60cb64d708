import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Style
import Tavaro.Theme

// Where on the canvas the camera is: a place is pressed where it lies.
RowLayout {
    id: grid

    required property InspectorModel fields
    required property string path
    readonly property var choices: fields.values && fields.choices(path)
    readonly property var places: ["topLeft", "top", "topRight", "left", "", "right", "bottomLeft", "bottom", "bottomRight"]

    Layout.fillWidth: true

    Label {
        Layout.fillWidth: true
        Layout.alignment: Qt.AlignTop
        text: qsTr("Camera place")
    }
    Rectangle {
        implicitWidth: 132
        implicitHeight: 84
        radius: Theme.radius
        color: Theme.colors.sunken
        border { width: 1; color: Theme.colors.strongLine }
        Accessible.role: Accessible.Grouping
        Accessible.name: qsTr("Camera place")

        Grid {
            anchors.centerIn: parent
            columns: 3
            Repeater {
                model: grid.places
                RadioButton {
                    id: place

                    required property string modelData

                    width: 42
                    height: 26
                    enabled: modelData !== ""
                    checked: grid.fields.values[grid.path] === modelData
                    focusPolicy: Qt.StrongFocus
                    text: grid.choices.find(each => each.name === modelData)?.label ?? ""
                    ToolTip.visible: hovered && enabled
                    ToolTip.delay: 600
                    ToolTip.text: text
                    Accessible.ignored: !enabled
                    Keys.onReturnPressed: Reach.press(place)
                    Keys.onEnterPressed: Reach.press(place)
                    onClicked: grid.fields.set(grid.path, modelData)

                    indicator: null
                    contentItem: null
                    background: Item {
                        Rectangle {
                            anchors.centerIn: parent
                            visible: place.enabled
                            width: place.checked ? 22 : place.hovered ? 18 : 12
                            height: width
                            radius: width / 2
                            color: place.checked ? Theme.colors.accent : Theme.colors.strongLine
                            FocusRing { control: place }
                        }
                    }
                }
            }
        }
    }
}
