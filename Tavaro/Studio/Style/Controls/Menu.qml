import QtQuick
import QtQuick.Controls
import QtQuick.Templates as T
import Tavaro.Theme

T.Menu {
    id: control

    implicitWidth: Math.max(180, contentWidth + leftPadding + rightPadding)
    implicitHeight: contentHeight + topPadding + bottomPadding
    margins: 8
    padding: 4
    overlap: 1
    delegate: MenuItem {}
    contentItem: ListView {
        implicitWidth: contentItem.childrenRect.width
        implicitHeight: contentHeight
        model: control.contentModel
        interactive: contentHeight > height
        clip: true
        currentIndex: control.currentIndex
        ScrollBar.vertical: ScrollBar {}
    }
    background: PopupBackground {}
}
