import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Theme

// A page of the side panel: its title above what it holds.
ScrollView {
    id: page

    property string title // where the panel does not say it above
    default property alias content: column.data

    contentWidth: availableWidth
    contentHeight: column.implicitHeight + 28
    clip: true

    ColumnLayout {
        id: column

        x: 14
        y: 12
        width: page.availableWidth - 30
        spacing: 10

        Label {
            Layout.fillWidth: true
            Layout.bottomMargin: 2
            visible: page.title !== ""
            text: page.title
            wrapMode: Text.Wrap
            font { pixelSize: Theme.headingSize - 1; weight: Font.DemiBold }
            Accessible.role: Accessible.Heading
        }
    }
}
