import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Library
import Tavaro.Style
import Tavaro.Theme

// The takes that nobody finished, each a card with what to do about it.
Rows {
    spacing: 24
    bottomPadding: 12
    model: Library.takes

    Card {
        id: take

        required property string takeId
        required property string age
        required property string length
        required property string still
        required property string warning

        implicitHeight: 108
        Accessible.role: Accessible.Grouping
        Accessible.name: qsTr("An unfinished recording, %1, %2").arg(length).arg(age)

        RowLayout {
            anchors { fill: parent; margins: 12; rightMargin: 20 }
            spacing: 16
            Rectangle {
                Layout.preferredWidth: 149
                Layout.preferredHeight: 84
                radius: 5
                color: Theme.colors.sunken
                Icon { anchors.centerIn: parent; icon: "film"; size: 24; visible: picture.status !== Image.Ready }
                Image {
                    id: picture

                    anchors.fill: parent
                    asynchronous: true
                    source: take.still
                    sourceSize: Qt.size(149 * Screen.devicePixelRatio, 84 * Screen.devicePixelRatio)
                    Accessible.ignored: true
                }
            }
            ColumnLayout {
                Layout.fillWidth: true
                spacing: 4
                Label {
                    Layout.fillWidth: true
                    text: qsTr("We found an unfinished recording")
                    font { pixelSize: Theme.headingSize; weight: Font.DemiBold }
                    elide: Text.ElideRight
                }
                Label {
                    Layout.fillWidth: true
                    text: qsTr("%1 long · %2").arg(take.length).arg(take.age)
                    color: Theme.colors.secondaryText
                    elide: Text.ElideRight
                }
                Label {
                    Layout.fillWidth: true
                    visible: take.warning !== ""
                    text: take.warning
                    color: Theme.colors.warning
                    font.pixelSize: Theme.captionSize
                    elide: Text.ElideRight
                }
            }
            Button {
                text: qsTr("Throw away")
                flat: true
                onClicked: Library.discard(take.takeId)
            }
            Button {
                text: qsTr("Keep")
                highlighted: true
                onClicked: Library.keep(take.takeId)
            }
        }
    }
}
