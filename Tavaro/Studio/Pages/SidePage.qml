import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Theme

// A page of the side panel: its title above what it holds.
ScrollView {
    id: page

    property string title // where the panel does not say it above
    default property alias content: column.data

    // What has the keyboard is to be seen.
    readonly property Item focused: Window.activeFocusItem

    function holds(item: Item): bool {
        for (let each = item; each; each = each.parent) if (each === column) return true;
        return false;
    }
    function reveal(item: Item) {
        const top = item.mapToItem(column, 0, 0).y;
        const lowest = Math.max(0, contentHeight - height);
        const wanted = Math.max(Math.min(contentItem.contentY, top - 16), top + item.height + 40 - height);
        contentItem.contentY = Math.max(0, Math.min(lowest, wanted));
    }

    onFocusedChanged: if (focused && holds(focused)) reveal(focused)
    contentWidth: availableWidth
    contentHeight: column.implicitHeight + 28
    clip: true

    ColumnLayout {
        id: column

        x: 14
        y: 12
        width: page.availableWidth - 30
        spacing: 10

        Label {
            Layout.fillWidth: true
            Layout.bottomMargin: 2
            visible: page.title !== ""
            text: page.title
            wrapMode: Text.Wrap
            font { pixelSize: Theme.headingSize - 1; weight: Font.DemiBold }
            Accessible.role: Accessible.Heading
        }
    }
}
