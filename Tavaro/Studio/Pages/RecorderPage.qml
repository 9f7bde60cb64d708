import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Recorder
import Tavaro.Style
import Tavaro.Theme

// Everything of a take before it begins, and the take itself while it goes on.
Item {
    id: page

    required property RecorderModel recorder
    property RecorderKeys keys: null
    property FirstTake firstTake: null
    readonly property RecorderSources sources: recorder.sources
    readonly property bool isIdle: recorder.phase === RecorderModel.Idle
    readonly property bool isFirst: firstTake !== null && firstTake.isWanted

    // Devices and stills are live only while somebody looks.
    Binding {
        target: page.recorder
        property: "isWatched"
        value: page.visible && (page.Window.visibility !== Window.Hidden && page.Window.visibility !== Window.Minimized)
    }

    RowLayout {
        anchors { fill: parent; margins: Theme.pageMargin; topMargin: 24; bottomMargin: 24 }
        spacing: 28

        ColumnLayout {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredWidth: 400 // whatever is in it: what wraps asks for another width whenever it has one
            spacing: 14

            Label {
                visible: !page.isFirst
                text: qsTr("New recording")
                font { pixelSize: Theme.titleSize; weight: Font.DemiBold }
                Accessible.role: Accessible.Heading
            }
            RecorderWelcome {
                Layout.fillWidth: true
                visible: page.isFirst && page.isIdle
                firstTake: page.firstTake
            }
            TabBar {
                id: kinds

                property bool isThere: false

                Accessible.name: qsTr("Kinds of sources")
                Layout.fillWidth: true
                visible: !page.sources.asksUser
                enabled: page.isIdle
                onCurrentIndexChanged: {
                    if (!isThere) return;
                    currentIndex === 3 ? page.sources.chooseArea() : page.sources.leaveArea();
                }

                Repeater {
                    model: [qsTr("Display"), qsTr("Window"), qsTr("Application"), qsTr("Area")]
                    TabButton {
                        required property string modelData
                        text: modelData
                    }
                }
                Component.onCompleted: {
                    const kind = page.sources.chosen.split(":")[0];
                    currentIndex = Math.max(0, ["display", "window", "application", "area"].indexOf(kind));
                    isThere = true;
                }
            }
            Label {
                Layout.fillWidth: true
                visible: page.sources.asksUser
                text: qsTr("Your desktop asks what to share when the recording begins.")
                wrapMode: Text.Wrap
            }
            StackLayout {
                Layout.fillWidth: true
                Layout.fillHeight: true
                enabled: page.isIdle
                currentIndex: kinds.currentIndex

                RecorderSourceGrid {
                    sources: page.sources
                    model: page.sources.displays
                    emptyText: page.sources.problem.length > 0 ? "" : qsTr("Looking for displays …")
                }
                RecorderSourceGrid {
                    sources: page.sources
                    model: page.sources.windows
                    emptyText: qsTr("No window is open.")
                }
                RecorderSourceGrid {
                    sources: page.sources
                    model: page.sources.applications
                    emptyText: qsTr("No application shows a window.")
                }
                RecorderArea { sources: page.sources }
            }
            Rows {
                spacing: 14
                model: page.sources.limits
                Label {
                    required property string modelData
                    text: modelData
                    textFormat: Text.PlainText
                    wrapMode: Text.Wrap
                    color: Theme.colors.secondaryText
                    font.pixelSize: Theme.captionSize
                }
            }
            Label {
                Layout.fillWidth: true
                visible: page.sources.problem.length > 0
                text: page.sources.problem
                textFormat: Text.PlainText
                wrapMode: Text.Wrap
            }
        }

        ColumnLayout {
            Layout.preferredWidth: 280
            Layout.minimumWidth: 280
            Layout.maximumWidth: 280
            Layout.fillHeight: true
            spacing: 14

            RecorderSide {
                Layout.fillWidth: true
                Layout.fillHeight: true
                enabled: page.isIdle
                recorder: page.recorder
                keys: page.keys
            }
            RecorderTake {
                Layout.fillWidth: true
                recorder: page.recorder
            }
        }
    }
}
