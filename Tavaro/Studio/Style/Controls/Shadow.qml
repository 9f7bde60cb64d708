import QtQuick
import Tavaro.Theme

// Of a raised rectangle that fills the parent.
BorderImage {
    z: -1
    anchors.fill: parent
    anchors { leftMargin: -24; rightMargin: -24; topMargin: -16; bottomMargin: -32 }
    border { left: 40; right: 40; top: 40; bottom: 40 }
    source: "Icons/shadow.png"
    opacity: Theme.isDark ? 1 : 0.55
}
