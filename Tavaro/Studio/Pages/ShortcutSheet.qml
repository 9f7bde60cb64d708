import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Style
import Tavaro.Theme

// All shortcuts on one sheet, which can be searched.
Dialog {
    id: sheet

    title: qsTr("Keyboard shortcuts")
    width: Math.min(560, parent ? parent.width - 32 : 560)
    height: Math.min(640, parent ? parent.height - 32 : 640)
    closePolicy: Popup.CloseOnEscape | Popup.CloseOnPressOutside
    onOpened: { search.clear(); search.forceActiveFocus(); }

    contentItem: ColumnLayout {
        spacing: 12
        SearchField {
            id: search

            Layout.fillWidth: true
            Layout.topMargin: 8
            placeholderText: qsTr("Search the shortcuts")
            onTextChanged: keys.sought = text
        }
        ListView {
            id: list

            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            activeFocusOnTab: true
            boundsBehavior: Flickable.StopAtBounds
            model: ShortcutList { id: keys }
            section.property: "group"
            section.delegate: Label {
                required property string section

                leftPadding: 6
                topPadding: 14
                bottomPadding: 6
                text: section
                font.weight: Font.DemiBold
                Accessible.role: Accessible.Heading
            }
            delegate: Item {
                id: row

                required property string title
                required property string keys

                x: 6
                width: list.width - 26
                height: 30
                Accessible.role: Accessible.StaticText
                Accessible.name: qsTr("%1: %2").arg(title).arg(keys)
                Label {
                    anchors { left: parent.left; right: caps.left; rightMargin: 12; verticalCenter: parent.verticalCenter }
                    text: row.title
                    elide: Text.ElideRight
                    Accessible.ignored: true
                }
                Label {
                    id: caps

                    anchors { right: parent.right; verticalCenter: parent.verticalCenter }
                    text: row.keys
                    color: Theme.colors.secondaryText
                    Accessible.ignored: true
                }
                Rectangle {
                    anchors { fill: parent; leftMargin: -6; rightMargin: -6 }
                    visible: row.ListView.isCurrentItem && list.activeFocus
                    radius: Theme.radius
                    color: "transparent"
                    border { width: 2; color: Theme.colors.focus }
                }
            }
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Shortcuts")
            ScrollBar.vertical: ScrollBar {}
        }
        Label {
            visible: list.count === 0
            text: qsTr("No shortcut has that name.")
            color: Theme.colors.secondaryText
        }
    }
    footer: DialogButtonBox {
        Button {
            text: qsTr("Close")
            DialogButtonBox.buttonRole: DialogButtonBox.RejectRole
        }
    }
}
