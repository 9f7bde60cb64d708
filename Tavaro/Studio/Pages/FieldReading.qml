import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Theme

// A value that is only looked at.
Label {
    required property var field

    width: Math.min(implicitWidth, 160)
    text: field.editor === "number" || field.editor === "wholeNumber"
        ? [NumberText.shown(field.value, field.shownFactor, field.step), field.unit].join(" ") : String(field.value ?? "")
    elide: Text.ElideMiddle
    color: Theme.colors.secondaryText
    Accessible.name: qsTr("%1: %2").arg(field.label).arg(text)
}
