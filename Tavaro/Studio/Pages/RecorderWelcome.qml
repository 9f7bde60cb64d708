import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Recorder
import Tavaro.Style
import Tavaro.Theme

// Leads somebody new to their first take.
Pane {
    id: welcome

    property FirstTake firstTake: null
    readonly property int step: firstTake !== null ? firstTake.step : 0
    readonly property var titles: [qsTr("Choose what to film"), qsTr("Choose your sound"), qsTr("Try it")]
    readonly property var texts: [
        qsTr("Pick a display, a window or an application below."),
        qsTr("Switch the microphone or the camera on, at the right. You may leave them off."),
        qsTr("Tavaro films for %1 seconds. Click somewhere in what is filmed; the take ends by itself and plays, polished.")
            .arg(firstTake !== null ? firstTake.seconds : 0)]

    padding: 16
    background: Rectangle {
        radius: Theme.cardRadius
        color: Theme.colors.selection
    }

    GridLayout {
        anchors.fill: parent
        columns: welcome.width < 640 ? 1 : 2
        columnSpacing: 16
        rowSpacing: 12

        ColumnLayout {
            Layout.fillWidth: true
            spacing: 4

            Label {
                Layout.fillWidth: true
                text: qsTr("Step %1 of 3: %2").arg(welcome.step + 1).arg(welcome.titles[welcome.step])
                wrapMode: Text.Wrap
                font { pixelSize: Theme.headingSize; weight: Font.DemiBold }
            }
            Label {
                Layout.fillWidth: true
                text: welcome.texts[welcome.step]
                wrapMode: Text.Wrap
            }
        }
        RowLayout {
            Layout.alignment: Qt.AlignRight | Qt.AlignVCenter
            spacing: Theme.gap

            Button {
                text: qsTr("Skip")
                flat: true
                onClicked: welcome.firstTake.leave()
            }
            Button {
                text: qsTr("Back")
                visible: welcome.step > 0
                onClicked: welcome.firstTake.goBack()
            }
            Button {
                text: welcome.step < 2 ? qsTr("Next") : qsTr("Film %1 seconds").arg(welcome.firstTake !== null ? welcome.firstTake.seconds : 0)
                highlighted: true
                enabled: welcome.firstTake !== null && welcome.firstTake.canGoOn
                onClicked: welcome.firstTake.goOn()
            }
        }
    }
}
