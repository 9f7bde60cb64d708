import QtQuick
import QtQuick.Controls
import Tavaro.Style
import Tavaro.Theme

// A heading that folds what is under it.
ItemDelegate {
    id: heading

    property bool isFolded: false

    leftPadding: 0
    implicitHeight: 28
    font.weight: Font.DemiBold
    Accessible.role: Accessible.Button
    Accessible.description: isFolded ? qsTr("Folded") : qsTr("Unfolded")
    Keys.onReturnPressed: Reach.press(heading)

    contentItem: Text {
        leftPadding: 18
        text: heading.text
        textFormat: Text.PlainText
        font: heading.font
        color: Theme.colors.text
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideMiddle // of what somebody wrote
        Accessible.ignored: true
        Icon {
            anchors.verticalCenter: parent.verticalCenter
            icon: heading.isFolded ? "chevron-right" : "chevron-down"
            size: 10
        }
    }
}
