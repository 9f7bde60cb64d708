import QtQuick
import QtQuick.Templates as T
import Tavaro.Theme

T.Popup {
    implicitWidth: contentWidth + leftPadding + rightPadding
    implicitHeight: contentHeight + topPadding + bottomPadding
    margins: 8
    padding: 12
    background: PopupBackground {}
    T.Overlay.modal: Rectangle { color: Theme.colors.veil }
    T.Overlay.modeless: Item {}
}
