import QtQuick
import QtQuick.Controls
import Tavaro.Theme

// A slider over the colours that it leads through.
Slider {
    id: slider

    required property string name
    default property alias stops: gradient.stops

    implicitHeight: 20
    padding: 0
    stepSize: 0.01
    Accessible.name: name

    background: Rectangle {
        y: 4
        width: slider.width
        height: 12
        radius: 6
        border { width: 1; color: Theme.colors.line }
        gradient: Gradient {
            id: gradient

            orientation: Gradient.Horizontal
        }
    }
}
