import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Style
import Tavaro.Theme

// Every step of the project, whoever made it; one that is chosen becomes the present one, forth or back.
Item {
    id: panel

    required property EditorDesk desk
    readonly property StepList steps: desk.session.steps

    ColumnLayout {
        anchors { fill: parent; margins: 14; topMargin: 12; bottomMargin: 0 }
        spacing: 8

        Label {
            text: qsTr("Steps")
            font { pixelSize: Theme.headingSize - 1; weight: Font.DemiBold }
            Accessible.role: Accessible.Heading
        }
        ListView {
            id: list

            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.leftMargin: -8
            Layout.rightMargin: -8
            clip: true
            activeFocusOnTab: count > 0
            keyNavigationEnabled: true
            boundsBehavior: Flickable.StopAtBounds
            currentIndex: panel.steps.current
            highlightMoveDuration: 0
            model: panel.steps
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Steps")
            Keys.onShortcutOverride: event => event.accepted = event.key === Qt.Key_Up || event.key === Qt.Key_Down
            Keys.onReturnPressed: panel.steps.goTo(currentIndex)
            Keys.onEnterPressed: panel.steps.goTo(currentIndex)
            ScrollBar.vertical: ScrollBar {}

            header: StepRow {
                width: list.width
                name: qsTr("As it was opened")
                focusPolicy: Qt.StrongFocus
                maker: ""
                agent: ""
                when: ""
                isUndone: false
                isCurrent: panel.steps.current < 0
                onClicked: panel.steps.goTo(-1)
            }
            delegate: StepRow {
                required property int index

                width: list.width
                hasFocus: ListView.isCurrentItem && list.activeFocus
                onClicked: panel.steps.goTo(index)
            }
        }
    }
}
