import QtQuick
import QtQuick.Templates as T
import Tavaro.Theme

// Plain, since names and sentences come from elsewhere.
T.Label {
    textFormat: Text.PlainText
    color: enabled ? Theme.colors.text : Theme.colors.disabledText
    linkColor: Theme.colors.accentText
    font.family: Theme.face
    font.pixelSize: Theme.bodySize
}
