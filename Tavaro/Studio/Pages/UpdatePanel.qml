import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Settings
import Tavaro.Style
import Tavaro.Theme

// Whether there is a newer Tavaro, as the machine's package manager knows it.
ColumnLayout {
    id: panel

    spacing: 16

    Label {
        Layout.topMargin: 8
        text: qsTr("Updates")
        font { pixelSize: Theme.headingSize; weight: Font.DemiBold }
        Accessible.role: Accessible.Heading
    }
    Card {
        Layout.fillWidth: true
        implicitHeight: rows.implicitHeight + 32
        ColumnLayout {
            id: rows

            anchors { left: parent.left; right: parent.right; top: parent.top; margins: 16 }
            spacing: 12
            RowLayout {
                spacing: 16
                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: 2
                    Label {
                        Layout.fillWidth: true
                        text: Updates.isLooking ? qsTr("Asking the package manager …")
                            : Updates.text !== "" ? Updates.text : qsTr("A newer Tavaro comes from your package manager.")
                        textFormat: Text.PlainText
                        wrapMode: Text.Wrap
                        font.weight: Font.Medium
                    }
                    Label {
                        Layout.fillWidth: true
                        visible: text !== ""
                        text: Updates.text !== "" ? Updates.hint : qsTr("Tavaro only asks it, and never fetches anything itself.")
                        textFormat: Text.PlainText
                        wrapMode: Text.Wrap
                        color: Theme.colors.secondaryText
                    }
                }
                Button {
                    Layout.alignment: Qt.AlignTop
                    text: qsTr("Look now")
                    enabled: !Updates.isLooking
                    Accessible.name: qsTr("Look for updates now")
                    onClicked: Updates.look()
                }
            }
            RowLayout {
                Label {
                    Layout.fillWidth: true
                    text: qsTr("Look once a week")
                }
                Switch {
                    Accessible.name: qsTr("Look for updates once a week")
                    checked: Updates.isWeekly
                    onToggled: { Updates.isWeekly = checked; checked = Qt.binding(() => Updates.isWeekly); }
                }
            }
        }
    }
}
