import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Style
import Tavaro.Theme

// A colour by hand: its hue, how strong and how light it is, how much is seen through it, its code, and those of late.
Popup {
    id: popup

    required property string name
    required property EditorSession session
    property color value
    // Greys have no hue: it is kept while one is passed.
    property real hue: 0
    signal given(color color)

    function giveParts(saturation: real, light: real) { given(Qt.hsva(hue, saturation, light, value.a)) }

    width: 236
    modal: false
    focus: true
    onValueChanged: if (value.hsvHue >= 0 && !hues.pressed) hue = value.hsvHue
    onClosed: session.noteColor(value)

    contentItem: ColumnLayout {
        spacing: 8

        // Keys have the sliders and the code.
        Rectangle {
            id: field

            Layout.fillWidth: true
            implicitHeight: 132
            color: Qt.hsva(popup.hue, 1, 1, 1)
            Rectangle {
                anchors.fill: parent
                gradient: Gradient {
                    orientation: Gradient.Horizontal
                    GradientStop { position: 0; color: "white" }
                    GradientStop { position: 1; color: "#00ffffff" }
                }
            }
            Rectangle {
                anchors.fill: parent
                gradient: Gradient {
                    GradientStop { position: 0; color: "#00000000" }
                    GradientStop { position: 1; color: "black" }
                }
            }
            Rectangle {
                x: popup.value.hsvSaturation * parent.width - 7
                y: (1 - popup.value.hsvValue) * parent.height - 7
                width: 14
                height: 14
                radius: 7
                color: "transparent"
                border { width: 2; color: popup.value.hsvValue > 0.6 ? "black" : "white" }
            }
            MouseArea {
                function take(at: point) {
                    popup.giveParts(Math.max(0, Math.min(1, at.x / width)), Math.max(0, Math.min(1, 1 - at.y / height)));
                }
                anchors.fill: parent
                Accessible.ignored: true
                onPressed: mouse => take(Qt.point(mouse.x, mouse.y))
                onPositionChanged: mouse => take(Qt.point(mouse.x, mouse.y))
            }
        }
        ColorSlider {
            id: hues

            Layout.fillWidth: true
            name: qsTr("Hue of %1").arg(popup.name)
            value: popup.hue
            onMoved: { popup.hue = value; popup.giveParts(Math.max(popup.value.hsvSaturation, 0.01), popup.value.hsvValue); }
            GradientStop { position: 0; color: "#ff0000" }
            GradientStop { position: 0.167; color: "#ffff00" }
            GradientStop { position: 0.333; color: "#00ff00" }
            GradientStop { position: 0.5; color: "#00ffff" }
            GradientStop { position: 0.667; color: "#0000ff" }
            GradientStop { position: 0.833; color: "#ff00ff" }
            GradientStop { position: 1; color: "#ff0000" }
        }
        ColorSlider {
            Layout.fillWidth: true
            name: qsTr("Opacity of %1").arg(popup.name)
            value: popup.value.a
            onMoved: popup.given(Qt.hsva(popup.hue, popup.value.hsvSaturation, popup.value.hsvValue, value))
            GradientStop { position: 0; color: Theme.colors.raised }
            GradientStop { position: 1; color: Qt.rgba(popup.value.r, popup.value.g, popup.value.b, 1) }
        }
        RowLayout {
            spacing: 6
            TextField {
                id: code

                function restore() { text = Qt.binding(() => NumberText.code(popup.value)) }

                Layout.fillWidth: true
                implicitHeight: 28
                text: NumberText.code(popup.value)
                Accessible.name: qsTr("Code of %1").arg(popup.name)
                onEditingFinished: {
                    const typed = NumberText.color(text, popup.value);
                    restore();
                    if (typed.valid) popup.given(typed);
                }
            }
            NumberField {
                name: qsTr("Opacity of %1").arg(popup.name)
                unit: "%"
                implicitWidth: 68
                implicitHeight: 28
                shown: NumberText.shown(popup.value.a, 100, 0.01)
                onGiven: number => popup.given(Qt.rgba(popup.value.r, popup.value.g, popup.value.b, number / 100))
            }
        }
        Flow {
            Layout.fillWidth: true
            spacing: 5
            visible: popup.session.recentColors.length > 0
            Repeater {
                model: popup.session.recentColors
                Button {
                    id: recent

                    required property color modelData

                    implicitWidth: 24
                    implicitHeight: 24
                    Accessible.name: qsTr("Recent color %1").arg(String(modelData))
                    onClicked: popup.given(modelData)
                    background: Rectangle {
                        radius: 4
                        color: recent.modelData
                        border { width: 1; color: Theme.colors.strongLine }
                        FocusRing { control: recent }
                    }
                }
            }
        }
    }
}
