import QtQuick
import QtQuick.Controls
import QtQuick.Templates as T

T.ScrollView {
    id: control

    // What has the keyboard is to be seen; lists see to that themselves.
    readonly property Item focused: Window.activeFocusItem

    function holds(item: Item): bool {
        const isList = contentItem?.currentIndex !== undefined;
        for (let each = isList ? null : item; each; each = each.parent) if (each === contentItem) return true;
        return false;
    }
    function reveal(item: Item) {
        const top = item.mapToItem(contentItem.contentItem, 0, 0).y;
        const lowest = Math.max(0, contentItem.contentHeight - contentItem.height);
        const wanted = Math.max(Math.min(contentItem.contentY, top - 16), top + item.height + 40 - contentItem.height);
        contentItem.contentY = Math.max(0, Math.min(lowest, wanted));
    }

    onFocusedChanged: if (focused && focused !== contentItem && holds(focused)) reveal(focused)
    implicitWidth: Math.max(implicitBackgroundWidth + leftInset + rightInset, contentWidth + leftPadding + rightPadding)
    implicitHeight: Math.max(implicitBackgroundHeight + topInset + bottomInset, contentHeight + topPadding + bottomPadding)
    ScrollBar.vertical: ScrollBar {
        parent: control
        x: control.width - width
        y: control.topPadding
        height: control.availableHeight
        active: control.ScrollBar.horizontal.active
    }
    ScrollBar.horizontal: ScrollBar {
        parent: control
        x: control.leftPadding
        y: control.height - height
        width: control.availableWidth
        active: control.ScrollBar.vertical.active
    }
}
