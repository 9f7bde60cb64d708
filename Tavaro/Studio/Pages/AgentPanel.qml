import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Settings
import Tavaro.Style
import Tavaro.Theme

// Which agents may control Tavaro, and how they are told of it.
ColumnLayout {
    id: panel

    component Registration: ColumnLayout {
        id: registration

        required property string client
        required property string text

        spacing: 8
        visible: text !== ""
        RowLayout {
            Label {
                Layout.fillWidth: true
                text: registration.client
                font.weight: Font.Medium
            }
            Button {
                text: done.running ? qsTr("Copied") : qsTr("Copy")
                icon.source: Theme.icon(done.running ? "check" : "clipboard")
                Accessible.name: qsTr("Copy for %1").arg(registration.client)
                onClicked: { Agents.copy(registration.text); done.restart(); }
                Timer { id: done; interval: 2000 }
            }
        }
        Label {
            Layout.fillWidth: true
            padding: 10
            text: registration.text
            textFormat: Text.PlainText
            elide: Text.ElideMiddle
            font { family: "JetBrains Mono"; pixelSize: Theme.captionSize }
            background: Rectangle {
                radius: Theme.radius
                color: Theme.colors.sunken
            }
        }
    }

    spacing: 16

    Label {
        Layout.topMargin: 8
        text: qsTr("MCP")
        font { pixelSize: Theme.headingSize; weight: Font.DemiBold }
        Accessible.role: Accessible.Heading
    }
    Card {
        Layout.fillWidth: true
        implicitHeight: access.implicitHeight + 32
        ColumnLayout {
            id: access

            anchors { left: parent.left; right: parent.right; top: parent.top; margins: 16 }
            spacing: 12
            RowLayout {
                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: 2
                    Label { text: qsTr("Agents may control Tavaro"); font.weight: Font.Medium }
                    Label {
                        Layout.fillWidth: true
                        text: qsTr("Each one is asked for when it first calls.")
                        color: Theme.colors.secondaryText
                        wrapMode: Text.Wrap
                    }
                }
                Switch {
                    Accessible.name: qsTr("Agents may control Tavaro")
                    checked: Agents.isOn
                    onToggled: { Agents.isOn = checked; checked = Qt.binding(() => Agents.isOn); }
                }
            }
            Label {
                Layout.fillWidth: true
                visible: Agents.problem !== ""
                text: Agents.problem
                color: Theme.colors.warning
                wrapMode: Text.Wrap
            }
            Rows {
                spacing: 12
                model: Agents
                AgentRow {}
            }
        }
    }
    Card {
        Layout.fillWidth: true
        visible: Agents.commandLine !== ""
        implicitHeight: ways.implicitHeight + 32
        ColumnLayout {
            id: ways

            anchors { left: parent.left; right: parent.right; top: parent.top; margins: 16 }
            spacing: 16
            Registration { client: qsTr("Claude Code"); text: Agents.commandLine }
            Registration { client: qsTr("Claude Desktop / Cursor"); text: Agents.configuration }
        }
    }
}
