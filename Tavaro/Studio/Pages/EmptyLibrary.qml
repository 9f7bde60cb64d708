import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Style
import Tavaro.Theme

// What somebody sees first.
Item {
    id: empty

    signal bring
    signal record

    ColumnLayout {
        anchors.centerIn: parent
        width: Math.min(parent.width - 64, 440)
        spacing: 12

        Rectangle {
            Layout.alignment: Qt.AlignHCenter
            Layout.bottomMargin: 12
            implicitWidth: 88
            implicitHeight: 88
            radius: 22
            color: Theme.colors.selection
            Icon { anchors.centerIn: parent; icon: "collection-play"; size: 40; color: Theme.colors.accentText }
        }
        Label {
            Layout.fillWidth: true
            text: qsTr("Your recordings will be here")
            font { pixelSize: Theme.titleSize; weight: Font.DemiBold }
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            Accessible.role: Accessible.Heading
        }
        Label {
            Layout.fillWidth: true
            text: qsTr("Record your screen, and Tavaro makes the first edit. Or drop a movie here, or an archive that somebody gave you.")
            color: Theme.colors.secondaryText
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            lineHeight: 1.25
        }
        RowLayout {
            Layout.alignment: Qt.AlignHCenter
            Layout.topMargin: 12
            spacing: 8
            Button {
                text: qsTr("Bring in a movie…")
                icon.source: Theme.icon("plus-lg")
                onClicked: empty.bring()
            }
            Button {
                text: qsTr("Make a recording")
                icon.source: Theme.icon("record-fill")
                highlighted: true
                onClicked: empty.record()
            }
        }
    }
}
