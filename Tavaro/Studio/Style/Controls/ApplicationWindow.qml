import QtQuick
import QtQuick.Templates as T
import Tavaro.Theme

T.ApplicationWindow {
    color: Theme.colors.window
    font { family: Theme.face; pixelSize: Theme.bodySize }
}
