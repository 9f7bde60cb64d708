import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Exports
import Tavaro.Style
import Tavaro.Theme

// One export: waiting, under way, or what became of it.
Card {
    id: row

    required property int index
    required property string name
    required property string title
    required property string detail
    required property string phase
    required property double share
    required property string status
    required property string warning
    required property string file
    required property string still
    required property string checked
    required property bool isLegible
    required property ExportQueue queue
    readonly property bool isActive: phase === "waiting" || phase === "running"

    implicitHeight: Math.max(picture.height + 24, words.implicitHeight + 24)
    Accessible.role: Accessible.Grouping
    Accessible.name: [name, title, status, warning, checked].filter(Boolean).join(", ")

    Rectangle {
        id: picture

        anchors { left: parent.left; top: parent.top; margins: 12 }
        width: 128
        height: 72
        radius: 5
        color: Theme.colors.sunken
        Icon { anchors.centerIn: parent; icon: "film"; size: 22; visible: image.status !== Image.Ready }
        Image {
            id: image

            anchors.fill: parent
            asynchronous: true
            source: row.still
            sourceSize: Qt.size(128 * Screen.devicePixelRatio, 72 * Screen.devicePixelRatio)
            Accessible.ignored: true
        }
    }
    ColumnLayout {
        id: words

        anchors { left: picture.right; right: buttons.left; verticalCenter: parent.verticalCenter; leftMargin: 16; rightMargin: 16 }
        spacing: 4

        Label {
            Layout.fillWidth: true
            text: row.phase === "done" ? row.file : row.name
            textFormat: Text.PlainText
            font.weight: Font.DemiBold
            elide: Text.ElideMiddle
        }
        Label {
            Layout.fillWidth: true
            text: [row.title, row.detail].filter(Boolean).join(" · ")
            color: Theme.colors.secondaryText
            font.pixelSize: Theme.captionSize
            elide: Text.ElideRight
        }
        Label {
            Layout.fillWidth: true
            text: row.status
            color: row.phase === "failed" ? Theme.colors.dangerText : Theme.colors.secondaryText
            font.pixelSize: Theme.captionSize
            elide: Text.ElideRight
        }
        Label {
            Layout.fillWidth: true
            visible: row.warning !== ""
            text: row.warning
            textFormat: Text.PlainText
            color: row.phase === "failed" ? Theme.colors.dangerText : Theme.colors.warning
            font.pixelSize: Theme.captionSize
            wrapMode: Text.Wrap
        }
        RowLayout {
            visible: row.checked !== ""
            spacing: 6
            Icon {
                Layout.alignment: Qt.AlignTop
                Layout.topMargin: 2
                icon: row.isLegible ? "exclamation-triangle" : "shield-lock"
                size: 12
                color: said.color
            }
            Label {
                id: said

                Layout.fillWidth: true
                text: row.checked
                textFormat: Text.PlainText
                color: row.isLegible ? Theme.colors.dangerText : Theme.colors.secondaryText
                font.pixelSize: Theme.captionSize
                wrapMode: Text.Wrap
            }
        }
        ProgressBar {
            Layout.fillWidth: true
            Layout.topMargin: 4
            visible: row.phase === "running"
            value: row.share
            Accessible.name: qsTr("Progress of %1").arg(row.name)
        }
    }
    RowLayout {
        id: buttons

        anchors { right: parent.right; verticalCenter: parent.verticalCenter; rightMargin: 12 }
        spacing: 4

        Button {
            visible: row.isActive
            text: qsTr("Cancel")
            onClicked: row.queue.cancel(row.index)
            Accessible.name: qsTr("Cancel the export of %1").arg(row.name)
        }
        Button {
            visible: row.phase === "done"
            text: qsTr("Show in folder")
            onClicked: row.queue.showInFolder(row.index)
            Accessible.name: qsTr("Show %1 in its folder").arg(row.file)
        }
        Button {
            visible: !row.isActive && row.phase !== "done"
            text: qsTr("Export again")
            onClicked: row.queue.again(row.index)
            Accessible.name: qsTr("Export %1 again").arg(row.name)
        }
        ToolButton {
            id: more

            visible: !row.isActive
            icon.source: Theme.icon("three-dots")
            ToolTip.text: qsTr("More for %1").arg(row.file || row.name)
            onClicked: menu.popup(more, 0, more.height)
        }
    }
    Menu {
        id: menu

        MenuItem { text: qsTr("Open"); enabled: row.phase === "done"; icon.source: Theme.icon("file-earmark-play"); onTriggered: row.queue.open(row.index) }
        MenuItem { text: qsTr("Copy path"); enabled: row.phase === "done"; icon.source: Theme.icon("clipboard"); onTriggered: row.queue.copyPath(row.index) }
        MenuItem { text: qsTr("Export again"); icon.source: Theme.icon("arrow-repeat"); onTriggered: row.queue.again(row.index) }
        MenuSeparator {}
        MenuItem { text: qsTr("Take off the list"); icon.source: Theme.icon("x-lg"); onTriggered: row.queue.remove(row.index) }
    }
}
