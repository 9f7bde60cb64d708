import QtQuick
import QtQuick.Controls
import QtQuick.Templates as T
import Tavaro.Theme

T.DialogButtonBox {
    id: control

    implicitWidth: contentWidth + leftPadding + rightPadding
    implicitHeight: contentHeight + topPadding + bottomPadding
    spacing: Theme.gap
    padding: 24
    topPadding: 0
    alignment: Qt.AlignRight
    contentWidth: contentItem.contentWidth
    delegate: Button {}
    contentItem: ListView {
        implicitWidth: contentWidth
        implicitHeight: Theme.controlHeight
        model: control.contentModel
        spacing: control.spacing
        orientation: ListView.Horizontal
        boundsBehavior: Flickable.StopAtBounds
        snapMode: ListView.SnapToItem
        interactive: false
    }
}
