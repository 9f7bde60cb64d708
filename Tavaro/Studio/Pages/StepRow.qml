import QtQuick
import QtQuick.Controls
import Tavaro.Theme

// A step: its name, who made it and when.
ItemDelegate {
    id: row

    required property string name
    required property string maker
    required property string agent
    required property string when
    required property bool isUndone
    required property bool isCurrent
    property bool hasFocus: false
    readonly property string who: {
        if (maker === "agent") return agent;
        if (maker === "otherProgram") return qsTr("Another program");
        return maker === "" ? "" : name === "Auto Polish" ? qsTr("Auto Polish") : qsTr("You");
    }
    readonly property string detail: [who, when].filter(Boolean).join(" · ")

    height: detail ? 46 : 34
    focusPolicy: Qt.NoFocus
    highlighted: isCurrent
    text: name
    Accessible.name: [name, who, when, isCurrent ? qsTr("present") : isUndone ? qsTr("undone") : ""].filter(Boolean).join(", ")

    contentItem: Item {
        Column {
            anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter }
            spacing: 2
            Label {
                width: parent.width
                text: row.name
                textFormat: Text.PlainText
                elide: Text.ElideRight
                font { weight: row.isCurrent ? Font.DemiBold : Font.Normal; italic: row.isUndone }
                color: row.isUndone ? Theme.colors.secondaryText : Theme.colors.text
                Accessible.ignored: true
            }
            Label {
                width: parent.width
                visible: text !== ""
                text: row.detail
                textFormat: Text.PlainText
                elide: Text.ElideRight
                color: Theme.colors.secondaryText
                font.pixelSize: Theme.captionSize
                Accessible.ignored: true
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
