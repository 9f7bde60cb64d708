import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Recorder
import Tavaro.Style
import Tavaro.Theme

// What to record, and with what.
Item {
    id: page

    readonly property var chosen: Recorder.sources[list.currentIndex] ?? null

    function begin() {
        if (chosen && Recorder.phase === "idle") Recorder.start(chosen.kind, chosen.id);
    }

    Component.onCompleted: Recorder.look()

    ColumnLayout {
        anchors { fill: parent; margins: Theme.pageMargin; topMargin: 24 }
        spacing: 16

        RowLayout {
            spacing: 8
            Label {
                Layout.fillWidth: true
                text: qsTr("Record")
                font { pixelSize: Theme.titleSize; weight: Font.DemiBold }
                Accessible.role: Accessible.Heading
            }
            ToolButton {
                icon.source: Theme.icon("arrow-repeat")
                ToolTip.text: qsTr("Look again for what can be recorded")
                onClicked: Recorder.look()
            }
        }
        Card {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.maximumWidth: 720
            ListView {
                id: list

                anchors { fill: parent; margins: 8 }
                clip: true
                spacing: 2
                model: Recorder.sources
                activeFocusOnTab: true
                keyNavigationEnabled: true
                boundsBehavior: Flickable.StopAtBounds
                Accessible.role: Accessible.List
                Accessible.name: qsTr("Displays and windows")
                ScrollBar.vertical: ScrollBar {}
                delegate: ItemDelegate {
                    id: row

                    required property int index
                    required property var modelData

                    width: list.width
                    height: 48
                    highlighted: ListView.isCurrentItem
                    focusPolicy: Qt.NoFocus
                    text: modelData.name
                    Accessible.name: modelData.name + ", " + modelData.detail
                    Accessible.role: Accessible.ListItem
                    onClicked: list.currentIndex = index
                    onDoubleClicked: page.begin()
                    contentItem: RowLayout {
                        spacing: 12
                        Icon {
                            Layout.leftMargin: 4
                            icon: row.modelData.kind === "display" ? "display" : "window"
                            size: 18
                            color: row.highlighted ? Theme.colors.accentText : Theme.colors.secondaryText
                        }
                        ColumnLayout {
                            Layout.fillWidth: true
                            spacing: 1
                            Label {
                                Layout.fillWidth: true
                                text: row.modelData.name
                                elide: Text.ElideRight
                                font.weight: Font.Medium
                                Accessible.ignored: true
                            }
                            Label {
                                Layout.fillWidth: true
                                text: row.modelData.detail
                                color: Theme.colors.secondaryText
                                elide: Text.ElideRight
                                font.pixelSize: Theme.captionSize
                                Accessible.ignored: true
                            }
                        }
                    }
                }
            }
        }
        Label {
            Layout.fillWidth: true
            Layout.maximumWidth: 720
            visible: text !== ""
            text: Recorder.limits
            color: Theme.colors.secondaryText
            font.pixelSize: Theme.captionSize
            wrapMode: Text.Wrap
            maximumLineCount: 3
            elide: Text.ElideRight
        }
        RowLayout {
            Layout.maximumWidth: 720
            spacing: 20
            Switch {
                visible: Recorder.hasMicrophone
                text: qsTr("Microphone")
                checked: Recorder.microphone
                onToggled: { Recorder.microphone = checked; checked = Qt.binding(() => Recorder.microphone); }
            }
            Switch {
                visible: Recorder.hasSystemSound
                text: qsTr("System sound")
                checked: Recorder.systemSound
                onToggled: { Recorder.systemSound = checked; checked = Qt.binding(() => Recorder.systemSound); }
            }
            Switch {
                visible: Recorder.hasCamera
                text: qsTr("Camera")
                checked: Recorder.camera
                onToggled: { Recorder.camera = checked; checked = Qt.binding(() => Recorder.camera); }
            }
            Item { Layout.fillWidth: true }
            Button {
                text: qsTr("Start recording")
                icon.source: Theme.icon("record-fill")
                highlighted: true
                enabled: page.chosen !== null && Recorder.phase === "idle"
                onClicked: page.begin()
            }
        }
    }
}
