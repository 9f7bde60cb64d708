import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Style
import Tavaro.Theme

// What somebody sees first.
Item {
    id: empty

    signal bring

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
            text: qsTr("Drop a movie here and Tavaro makes a project of it, or an archive that somebody gave you.")
            color: Theme.colors.secondaryText
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            lineHeight: 1.25
        }
        Button {
            Layout.alignment: Qt.AlignHCenter
            Layout.topMargin: 12
            text: qsTr("Bring in a movie…")
            icon.source: Theme.icon("plus-lg")
            highlighted: true
            onClicked: empty.bring()
        }
    }
}
