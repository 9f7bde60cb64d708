import QtQuick
import QtQuick.Controls
import QtQuick.Templates as T
import Tavaro.Theme

T.Dialog {
    id: control

    implicitWidth: Math.max(contentWidth + leftPadding + rightPadding, implicitHeaderWidth, implicitFooterWidth)
    implicitHeight: contentHeight + topPadding + bottomPadding + (implicitHeaderHeight > 0 ? implicitHeaderHeight + spacing : 0)
                    + (implicitFooterHeight > 0 ? implicitFooterHeight + spacing : 0)
    anchors.centerIn: T.Overlay.overlay
    margins: 16
    padding: 24
    topPadding: 8
    bottomPadding: 16
    modal: true
    enter: Transition { NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.quick } }

    background: Rectangle {
        radius: Theme.cardRadius + 2
        color: Theme.colors.raised
        border { width: 1; color: Theme.colors.line }
        Shadow {}
    }
    header: Label {
        visible: control.title
        text: control.title
        wrapMode: Text.Wrap
        font { pixelSize: Theme.headingSize; weight: Font.DemiBold }
        padding: 24
        bottomPadding: 0
        Accessible.role: Accessible.Heading
    }
    footer: DialogButtonBox { visible: count > 0 }
    T.Overlay.modal: Rectangle { color: Theme.colors.veil }
}
