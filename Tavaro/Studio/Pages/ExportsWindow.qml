import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Exports
import Tavaro.Style
import Tavaro.Theme

// What is left of the program while exports go on after its window was closed.
ApplicationWindow {
    id: window

    required property ExportQueue queue
    signal wanted

    transientParent: null // else it goes with the window that was closed
    title: qsTr("Exports – Tavaro")
    width: 420
    height: 150
    minimumWidth: 360
    minimumHeight: 150
    color: Theme.colors.window

    ColumnLayout {
        anchors { fill: parent; margins: 20 }
        spacing: 10

        Label {
            Layout.fillWidth: true
            text: window.queue.summary
            font.weight: Font.DemiBold
            elide: Text.ElideMiddle
        }
        ProgressBar {
            Layout.fillWidth: true
            value: window.queue.share
            Accessible.name: window.queue.summary
        }
        Label {
            Layout.fillWidth: true
            text: qsTr("Tavaro ends when this is done.")
            color: Theme.colors.secondaryText
            font.pixelSize: Theme.captionSize
            elide: Text.ElideRight
        }
        RowLayout {
            Layout.fillWidth: true
            Button {
                text: qsTr("Cancel")
                onClicked: window.queue.cancel(0)
                Accessible.name: qsTr("Cancel the export under way")
            }
            Item { Layout.fillWidth: true }
            Button {
                text: qsTr("Open Tavaro")
                onClicked: window.wanted()
            }
        }
    }
}
