import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Files
import Tavaro.Style
import Tavaro.Theme

// The captions as a list: their times and texts are edited in place.
Item {
    id: panel

    required property EditorDesk desk
    readonly property EditorSession session: desk.session
    readonly property CaptionEditor captions: session.captions
    property string said

    ColumnLayout {
        anchors { fill: parent; margins: 12; leftMargin: 14; bottomMargin: 0 }
        spacing: 8

        RowLayout {
            spacing: 2
            Label {
                Layout.fillWidth: true
                text: qsTr("Captions")
                font { pixelSize: Theme.headingSize - 1; weight: Font.DemiBold }
                elide: Text.ElideRight
                Accessible.role: Accessible.Heading
            }
            EditorButton { session: panel.session; name: "addCaption"; picture: "plus-lg" }
            ToolButton { icon.source: Theme.icon("upload"); ToolTip.text: qsTr("Import captions…"); onClicked: source.open() }
            ToolButton { icon.source: Theme.icon("download"); ToolTip.text: qsTr("Export captions…"); enabled: list.count > 0; onClicked: target.open() }
        }
        CaptionShift {
            Layout.fillWidth: true
            visible: list.count > 0
            captions: panel.captions
        }
        Label {
            Layout.fillWidth: true
            visible: text !== ""
            text: panel.said
            textFormat: Text.PlainText
            elide: Text.ElideMiddle
            color: Theme.colors.secondaryText
            font.pixelSize: Theme.captionSize
        }
        RowList {
            id: list

            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.rightMargin: -10
            visible: count > 0
            spacing: 8
            model: panel.session.list("caption")
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Captions")
            ScrollBar.vertical: ScrollBar {}
            Component.onCompleted: positionViewAtIndex(Math.max(0, panel.captions.rowBefore(panel.session.playhead)), ListView.Beginning)

            delegate: CaptionRow {
                width: list.width - 14
                isLast: index + 1 === list.count
                session: panel.session
                captions: panel.captions
            }
        }
        Label {
            Layout.fillWidth: true
            visible: !list.visible
            text: qsTr("There are no captions yet. Add one at the playhead, or import a SubRip or WebVTT file.")
            wrapMode: Text.Wrap
            lineHeight: 1.2
            color: Theme.colors.secondaryText
        }
        EditorButton {
            visible: !list.visible
            session: panel.session
            name: "makeCaptions"
            picture: "badge-cc"
            display: AbstractButton.TextBesideIcon
        }
        Item { Layout.fillHeight: true; visible: !list.visible }
    }
    Connections {
        target: panel.captions
        function onCurrentChanged() { if (panel.captions.current >= 0) list.positionViewAtIndex(panel.captions.current, ListView.Contain) }
        function onWritten(file: string) { panel.said = qsTr("Written to “%1”").arg(file) }
    }
    FileDialog {
        id: source

        title: qsTr("Import captions in place of these")
        nameFilters: [qsTr("Captions (*.srt *.vtt)")]
        onAccepted: panel.captions.importFrom(selectedFile)
    }
    FileDialog {
        id: target

        title: qsTr("Export captions")
        mode: FileChoice.SaveFile
        defaultSuffix: "srt"
        nameFilters: [qsTr("SubRip (*.srt)"), qsTr("WebVTT (*.vtt)")]
        onAccepted: panel.captions.exportTo(selectedFile)
    }
}
