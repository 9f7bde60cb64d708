import QtQuick
import QtQuick.Templates as T
import Tavaro.Theme

T.Label {
    color: enabled ? Theme.colors.text : Theme.colors.disabledText
    linkColor: Theme.colors.accentText
    font.family: Theme.face
    font.pixelSize: Theme.bodySize
}
