import QtQuick
import QtQuick.Controls
import Tavaro.Theme

Switch {
    id: toggle

    required property var field

    function restore() { checked = Qt.binding(() => field.value === true) }

    checked: field.value === true
    opacity: field.isMixed ? 0.6 : 1
    Accessible.name: field.label
    onToggled: { field.give(checked); restore(); }
}
