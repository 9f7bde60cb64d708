import QtQuick
import QtQuick.Templates as T
import Tavaro.Theme

T.ToolTip {
    id: control

    x: parent ? (parent.width - implicitWidth) / 2 : 0
    y: parent ? parent.height + 6 : 0
    implicitWidth: contentWidth + leftPadding + rightPadding
    implicitHeight: contentHeight + topPadding + bottomPadding
    margins: 6
    padding: 6
    horizontalPadding: 10
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent | T.Popup.CloseOnReleaseOutsideParent
    contentItem: Text {
        text: control.text
        textFormat: Text.PlainText
        font { family: Theme.face; pixelSize: Theme.captionSize }
        color: Theme.colors.toastText
        wrapMode: Text.Wrap
    }
    background: Rectangle {
        radius: 5
        color: Theme.colors.toast
    }
}
