import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Theme

// Things that belong together, under a heading that folds them.
ColumnLayout {
    id: group

    required property string title
    property bool isFolded: false
    default property alias content: inside.data

    Layout.fillWidth: true
    spacing: 6

    Rectangle { Layout.fillWidth: true; implicitHeight: 1; color: Theme.colors.line }
    FieldHeading {
        Layout.fillWidth: true
        text: group.title
        isFolded: group.isFolded
        onClicked: group.isFolded = !group.isFolded
    }
    ColumnLayout {
        id: inside

        Layout.fillWidth: true
        visible: !group.isFolded
        spacing: 8
    }
}
