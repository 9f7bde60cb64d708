import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Recorder
import Tavaro.Style
import Tavaro.Theme

// A part of a display, dragged on its still and typed as numbers.
ColumnLayout {
    id: page

    required property RecorderSources sources
    readonly property AreaModel area: sources.area
    // Pixels of the display for one of the still.
    readonly property real scaling: still.shownRect.width > 0 ? area.displaySize.width / still.shownRect.width : 1

    function toDisplay(x, y) {
        return Qt.point(Math.round((x - still.shownRect.x) * scaling), Math.round((y - still.shownRect.y) * scaling))
    }

    spacing: 12

    PictureItem {
        id: still
        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.minimumHeight: 160
        picture: page.sources.areaStill
        Accessible.role: Accessible.Graphic
        Accessible.name: qsTr("Still of the display; the area is set by the fields below it")

        Rectangle {
            anchors.fill: parent
            visible: still.shownRect.width === 0
            radius: Theme.radius
            color: Theme.colors.sunken
        }
        // Drawn anew from where the pointer is pressed.
        MouseArea {
            property point from

            anchors.fill: parent
            cursorShape: Qt.CrossCursor
            onPressed: mouse => from = page.toDisplay(mouse.x, mouse.y)
            onPositionChanged: mouse => page.area.draw(from, page.toDisplay(mouse.x, mouse.y))
            onReleased: page.area.endDrag()
        }

        Rectangle {
            id: frame
            x: still.shownRect.x + page.area.x / page.scaling
            y: still.shownRect.y + page.area.y / page.scaling
            width: page.area.width / page.scaling
            height: page.area.height / page.scaling
            visible: still.shownRect.width > 0
            color: Qt.alpha(Theme.colors.accent, 0.18)
            border { width: 2; color: Theme.colors.accent }

            Repeater {
                // In the order of the grips: inside, four sides, four corners.
                model: [[0.5, 0.5], [0, 0.5], [1, 0.5], [0.5, 0], [0.5, 1], [0, 0], [1, 0], [0, 1], [1, 1]]

                Rectangle {
                    id: grip
                    required property int index
                    required property var modelData

                    x: modelData[0] * frame.width - width / 2
                    y: modelData[1] * frame.height - height / 2
                    width: index === 0 ? Math.max(0, frame.width - 20) : 12
                    height: index === 0 ? Math.max(0, frame.height - 20) : 12
                    radius: 2
                    color: index === 0 ? "transparent" : Theme.colors.accent
                    border { width: index === 0 ? 0 : 1; color: Theme.colors.onAccent }

                    MouseArea {
                        property point from

                        anchors { fill: parent; margins: grip.index === 0 ? 0 : -6 }
                        cursorShape: grip.index === 0 ? Qt.SizeAllCursor : Qt.ArrowCursor
                        onPressed: mouse => {
                            const at = mapToItem(still, mouse.x, mouse.y)
                            from = page.toDisplay(at.x, at.y)
                            page.area.beginDrag()
                        }
                        onPositionChanged: mouse => {
                            const at = mapToItem(still, mouse.x, mouse.y), here = page.toDisplay(at.x, at.y)
                            page.area.drag(grip.index, Qt.point(here.x - from.x, here.y - from.y))
                        }
                        onReleased: page.area.endDrag()
                    }
                }
            }
        }
    }

    Flow {
        Layout.fillWidth: true
        spacing: 12

        Repeater {
            model: [{label: qsTr("Left"), key: "x"}, {label: qsTr("Top"), key: "y"},
                    {label: qsTr("Width"), key: "width"}, {label: qsTr("Height"), key: "height"}]

            Row {
                id: number
                required property var modelData
                spacing: 6

                Label { text: number.modelData.label; height: box.height; verticalAlignment: Text.AlignVCenter }
                SpinBox {
                    id: box
                    width: 116
                    from: 0
                    to: 32767
                    textFromValue: value => String(value) // without separators
                    value: page.area[number.modelData.key]
                    onValueModified: {
                        page.area[number.modelData.key] = value
                        value = Qt.binding(() => page.area[number.modelData.key])
                    }
                    Accessible.name: number.modelData.label
                }
            }
        }
        ComboBox {
            width: 110
            model: page.area.shapes
            currentIndex: page.area.shape
            onActivated: index => page.area.shape = index
            Accessible.name: qsTr("Shape")
        }
        ComboBox {
            width: 140
            visible: page.area.displays.length > 1
            model: page.area.displays
            currentIndex: page.area.displays.indexOf(page.area.display)
            onActivated: page.area.display = currentText
            Accessible.name: qsTr("Display")
        }
    }
}
