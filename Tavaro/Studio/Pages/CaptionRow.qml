import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Style
import Tavaro.Theme

// One caption: when it is shown, and its text.
Rectangle {
    id: row

    required property int index
    required property string identity
    required property double start
    required property double duration
    required property string text
    property bool isLast: false
    property EditorSession session: null
    property CaptionEditor captions: null
    readonly property bool isCurrent: captions.current === index

    height: column.implicitHeight + 16
    radius: Theme.radius
    color: isCurrent ? Theme.colors.selection : Theme.colors.raised
    border { width: 1; color: isCurrent ? Theme.colors.accent : Theme.colors.line }
    Accessible.role: Accessible.ListItem
    Accessible.name: row.text
    Accessible.onPressAction: row.session.playhead = row.start

    TapHandler { onTapped: row.session.playhead = row.start }

    ColumnLayout {
        id: column

        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 8 }
        spacing: 6

        RowLayout {
            spacing: 4
            CaptionTime {
                captions: row.captions
                seconds: row.start
                Accessible.name: qsTr("Start of “%1”").arg(row.text)
                onChosen: seconds => row.captions.setStart(row.identity, seconds)
            }
            Label { text: "–"; color: Theme.colors.secondaryText }
            CaptionTime {
                captions: row.captions
                seconds: row.start + row.duration
                Accessible.name: qsTr("End of “%1”").arg(row.text)
                onChosen: seconds => row.captions.setEnd(row.identity, seconds)
            }
            Item { Layout.fillWidth: true }

            component Act: ToolButton {
                implicitWidth: 24
                implicitHeight: 28
                padding: 4
                horizontalPadding: 4
                icon { width: 14; height: 14 }
            }
            Row {
                Act {
                    enabled: field.cursorPosition > 0 && field.cursorPosition < field.length
                    icon.source: Theme.icon("scissors")
                    ToolTip.text: qsTr("Split at the text cursor (Ctrl+Return)")
                    onClicked: row.captions.split(row.identity, field.cursorPosition)
                }
                Act {
                    enabled: !row.isLast
                    icon.source: Theme.icon("link-45deg")
                    ToolTip.text: qsTr("Join with the next caption")
                    onClicked: row.captions.joinWithNext(row.identity)
                }
                Act {
                    icon.source: Theme.icon("trash")
                    ToolTip.text: qsTr("Delete this caption")
                    onClicked: row.captions.remove(row.identity)
                }
            }
        }
        CaptionText {
            id: field

            Layout.fillWidth: true
            text: row.text
            name: qsTr("Text of the caption at %1").arg(row.captions.timeText(row.start))
            onFocused: row.session.playhead = row.start
            onWritten: text => row.captions.setText(row.identity, text)
            onSplit: position => row.captions.split(row.identity, position)
        }
    }
}
