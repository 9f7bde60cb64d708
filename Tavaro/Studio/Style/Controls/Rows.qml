import QtQuick
import QtQuick.Layouts

// What comes and goes, below each other and as wide as this. No layout: that of Qt 6.4 asks a row that is gone for its
// size, and crashes.
Item {
    id: rows

    property alias model: repeater.model
    property alias spacing: column.spacing
    property alias bottomPadding: column.bottomPadding
    readonly property alias count: repeater.count
    default property alias delegate: repeater.delegate

    // A layout of Qt 6.4 that is being made forgets what its rows ask for meanwhile.
    function fit() { if (height !== implicitHeight) Layout.preferredHeight = implicitHeight }

    onImplicitHeightChanged: Qt.callLater(fit)
    Layout.fillWidth: true
    implicitHeight: column.implicitHeight
    visible: count > 0

    Column {
        id: column

        width: parent.width
        Repeater {
            id: repeater

            onItemAdded: (index, item) => item.width = Qt.binding(() => column.width)
        }
    }
}
