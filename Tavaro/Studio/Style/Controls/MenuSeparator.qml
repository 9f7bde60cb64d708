import QtQuick
import QtQuick.Templates as T
import Tavaro.Theme

T.MenuSeparator {
    implicitWidth: 180
    implicitHeight: 9
    padding: 4
    contentItem: Rectangle {
        implicitHeight: 1
        color: Theme.colors.line
    }
}
