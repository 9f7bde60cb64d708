import QtQuick
import QtQuick.Controls
import Tavaro.Theme

ColorButton {
    required property var field

    name: field.label
    session: field.session
    value: field.value ?? "transparent"
    isMixed: field.isMixed
    onBegun: field.fields.beginChange()
    onEnded: field.fields.endChange()
    onGiven: color => field.give(color)
}
