import QtQuick

// Rows with controls of their own: the row whose control has the keyboard is to be seen. Each has its `index`.
ListView {
    id: list

    readonly property Item focused: Window.activeFocusItem

    function reveal(item: Item) {
        for (let row = item; row; row = row.parent)
            if (row.parent === contentItem && row.index >= 0) return positionViewAtIndex(row.index, ListView.Contain);
    }

    clip: true
    boundsBehavior: Flickable.StopAtBounds
    onFocusedChanged: reveal(focused)
}
