import QtQuick
import QtQuick.Controls
import Tavaro.Library
import Tavaro.Style
import Tavaro.Theme

// Takes what is dropped anywhere on the window.
DropArea {
    id: area

    keys: ["text/uri-list"]
    onDropped: drop => {
        Library.bring(drop.urls);
        drop.accept(Qt.CopyAction);
    }
    Rectangle {
        anchors { fill: parent; margins: 12 }
        visible: area.containsDrag
        radius: Theme.cardRadius
        color: Theme.colors.selection
        opacity: 0.92
        border { width: 2; color: Theme.colors.accent }
        Label {
            anchors.centerIn: parent
            text: qsTr("Drop to bring it in")
            font { pixelSize: Theme.titleSize; weight: Font.DemiBold }
            color: Theme.colors.accentText
        }
    }
}
