import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Exports
import Tavaro.Style
import Tavaro.Theme

// The exports under way, and what was exported lately.
ColumnLayout {
    id: page

    required property ExportQueue queue

    spacing: 0

    RowLayout {
        Layout.fillWidth: true
        Layout.margins: Theme.pageMargin
        Layout.topMargin: 24
        Layout.bottomMargin: 16
        spacing: 12

        Label {
            Layout.fillWidth: true
            Layout.minimumHeight: Theme.controlHeight // also without the button
            text: qsTr("Exports")
            font { pixelSize: Theme.titleSize; weight: Font.DemiBold }
            Accessible.role: Accessible.Heading
        }
        Button {
            visible: page.queue.count > page.queue.activeCount
            text: qsTr("Clear the list")
            onClicked: page.queue.removeEnded()
        }
    }
    Label {
        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.margins: Theme.pageMargin
        visible: page.queue.count === 0
        text: qsTr("What you export will be here.\nOpen a project and choose Export, or press Ctrl+E.")
        color: Theme.colors.secondaryText
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        wrapMode: Text.Wrap
        lineHeight: 1.4
    }
    RowList {
        id: list

        Layout.fillWidth: true
        Layout.fillHeight: true
        Layout.leftMargin: Theme.pageMargin
        Layout.rightMargin: Theme.pageMargin - 12
        visible: page.queue.count > 0
        spacing: 10
        bottomMargin: Theme.pageMargin
        model: page.queue
        Accessible.role: Accessible.List
        Accessible.name: qsTr("Exports")
        ScrollBar.vertical: ScrollBar {}
        delegate: ExportRow {
            width: list.width - 12
            queue: page.queue
        }
    }
}
