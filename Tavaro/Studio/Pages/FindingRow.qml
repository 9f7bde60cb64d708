import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Privacy
import Tavaro.Style
import Tavaro.Theme

// What is hidden, or a heading of several: where it is, its value masked, its times, and whether it is hidden.
ItemDelegate {
    id: row

    required property int index
    required property bool isHeading
    required property bool isHidden
    required property bool isByHand
    required property bool isFolded
    required property string group
    required property string identity
    required property string title
    required property string span
    required property int count
    required property int hiddenCount
    property FindingList findings: null
    property FindingStills stills: null
    property bool hasFocus: false
    property bool isSelected: false
    readonly property string standing: isHeading ? qsTr("%1 of %2 hidden").arg(hiddenCount).arg(count) : isHidden ? qsTr("hidden") : qsTr("shown")
    readonly property string place: span !== "" ? span : qsTr("not in the film")
    signal touched

    height: isHeading ? 36 : 56
    padding: 0
    focusPolicy: Qt.NoFocus
    highlighted: isSelected
    text: title
    Accessible.role: Accessible.ListItem
    Accessible.name: (isHeading ? [title, standing] : [group, title, place, standing]).filter(Boolean).join(", ")
    // The list's current row has its keyboard.
    Keys.onSpacePressed: row.findings.toggle(row.index)
    onClicked: { row.touched(); row.findings.show(row.index); }

    contentItem: RowLayout {
        spacing: 6
        Icon {
            Layout.leftMargin: 4
            visible: row.isHeading
            icon: row.isFolded ? "chevron-right" : "chevron-down"
            size: 10
        }
        Rectangle {
            Layout.leftMargin: 4
            Layout.preferredWidth: 64
            Layout.preferredHeight: 40
            visible: !row.isHeading
            opacity: row.isHidden ? 1 : 0.5
            radius: 4
            color: Theme.colors.sunken
            FindingStill {
                anchors.fill: parent
                stills: row.stills
                identity: row.identity
            }
        }
        ColumnLayout {
            spacing: 2
            Label {
                Layout.fillWidth: true
                text: row.title
                textFormat: Text.PlainText
                elide: Text.ElideRight
                font.weight: row.isHeading ? Font.DemiBold : Font.Normal
                color: row.isHeading || row.isHidden ? Theme.colors.text : Theme.colors.secondaryText
                Accessible.ignored: true
            }
            Label {
                Layout.fillWidth: true
                visible: !row.isHeading
                text: row.place
                elide: Text.ElideRight
                color: Theme.colors.secondaryText
                font.pixelSize: Theme.captionSize
                Accessible.ignored: true
            }
        }
        Label {
            visible: row.isHeading
            text: qsTr("%1/%2").arg(row.hiddenCount).arg(row.count)
            color: Theme.colors.secondaryText
            font.pixelSize: Theme.captionSize
            Accessible.ignored: true
        }
        Switch {
            focusPolicy: Qt.NoFocus
            checked: row.isHidden
            Accessible.name: row.isHeading ? qsTr("Hide all: %1").arg(row.title) : qsTr("Hide %1, %2").arg(row.title).arg(row.place)
            onToggled: {
                row.touched();
                row.findings.setHidden(row.index, checked);
                checked = Qt.binding(() => row.isHidden);
            }
        }
    }
    Rectangle {
        anchors { fill: parent; margins: 1 }
        visible: row.hasFocus
        radius: Theme.radius
        color: "transparent"
        border { width: 2; color: Theme.colors.focus }
    }
}
