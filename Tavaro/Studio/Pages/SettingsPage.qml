import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Program
import Tavaro.Style
import Tavaro.Theme

ScrollView {
    id: page

    contentWidth: availableWidth

    ColumnLayout {
        x: Theme.pageMargin
        width: Math.min(page.availableWidth - 2 * Theme.pageMargin, 720)
        spacing: 16

        Label {
            Layout.topMargin: 24
            text: qsTr("Settings")
            font { pixelSize: Theme.titleSize; weight: Font.DemiBold }
            Accessible.role: Accessible.Heading
        }
        Label {
            Layout.topMargin: 8
            text: qsTr("Look")
            font { pixelSize: Theme.headingSize; weight: Font.DemiBold }
            Accessible.role: Accessible.Heading
        }
        Card {
            Layout.fillWidth: true
            implicitHeight: look.implicitHeight + 32
            RowLayout {
                id: look

                anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter; margins: 16 }
                Label {
                    Layout.fillWidth: true
                    text: qsTr("Windows are")
                }
                Segmented {
                    name: qsTr("Look of windows")
                    options: [
                        { text: qsTr("As the desktop"), value: "desktop" },
                        { text: qsTr("Light"), value: "light" },
                        { text: qsTr("Dark"), value: "dark" }
                    ]
                    value: Theme.look
                    onChosen: value => Theme.look = value
                }
            }
        }
        Label {
            Layout.topMargin: 8
            text: qsTr("Shortcuts")
            font { pixelSize: Theme.headingSize; weight: Font.DemiBold }
            Accessible.role: Accessible.Heading
        }
        Card {
            Layout.fillWidth: true
            implicitHeight: shortcuts.implicitHeight + 32
            RecorderShortcuts {
                id: shortcuts

                anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter; margins: 16 }
                keys: Studio.recorder.keys
            }
        }
        Label {
            Layout.topMargin: 8
            text: qsTr("Privacy")
            font { pixelSize: Theme.headingSize; weight: Font.DemiBold }
            Accessible.role: Accessible.Heading
        }
        Card {
            Layout.fillWidth: true
            implicitHeight: keys.implicitHeight + 32
            RecorderPrivacy {
                id: keys

                anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter; margins: 16 }
                recorder: Studio.recorder.recorder
            }
        }
        SpeechPanel { Layout.fillWidth: true }
        AgentPanel { Layout.fillWidth: true }
        UpdatePanel { Layout.fillWidth: true }
        Label {
            Layout.topMargin: 8
            Layout.bottomMargin: 32
            text: qsTr("Tavaro %1").arg(Studio.version)
            color: Theme.colors.secondaryText
            font.pixelSize: Theme.captionSize
        }
    }
}
