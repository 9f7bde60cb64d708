import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Privacy
import Tavaro.Style
import Tavaro.Theme

// What the film hides: the search for private text, and what it found, to be looked through by hand or by keys.
Item {
    id: panel

    required property EditorDesk desk
    readonly property PrivacyDesk privacy: desk.privacy
    readonly property FindingList findings: privacy.findings

    ColumnLayout {
        anchors { fill: parent; margins: 12; leftMargin: 14; bottomMargin: 0 }
        spacing: 8

        PrivacyScan {
            Layout.fillWidth: true
            run: panel.privacy.run
        }
        RowLayout {
            spacing: 2
            Label {
                Layout.fillWidth: true
                text: panel.findings.findings === 0 ? qsTr("Hidden") : qsTr("Hidden: %1 of %2 found").arg(panel.findings.hidden).arg(panel.findings.findings)
                font.weight: Font.DemiBold
                elide: Text.ElideRight
                Accessible.role: Accessible.Heading
            }
            EditorButton { session: panel.desk.session; name: "addRedaction"; picture: "plus-lg" }
        }
        ListView {
            id: list

            // What was rejected goes to the end of its kind; the next one is looked at then.
            function reject() {
                const row = currentIndex;
                if (panel.findings.reject(row)) currentIndex = Math.min(row, count - 1);
            }

            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.rightMargin: -10
            visible: count > 0
            clip: true
            activeFocusOnTab: count > 0
            keyNavigationEnabled: true
            boundsBehavior: Flickable.StopAtBounds
            highlightMoveDuration: 0
            model: panel.findings
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Findings")
            Keys.onShortcutOverride: event => event.accepted = [Qt.Key_Up, Qt.Key_Down, Qt.Key_Space, Qt.Key_Delete, Qt.Key_Return, Qt.Key_Enter].includes(event.key)
            onCountChanged: if (currentIndex < 0 && count > 0) currentIndex = 0
            Keys.onDeletePressed: reject()
            Keys.onReturnPressed: panel.findings.show(currentIndex)
            Keys.onEnterPressed: panel.findings.show(currentIndex)
            ScrollBar.vertical: ScrollBar {}

            delegate: FindingRow {
                width: list.width - 14
                findings: panel.findings
                stills: panel.privacy.stills
                hasFocus: ListView.isCurrentItem && list.activeFocus
                isSelected: panel.findings.current === index
                onTouched: list.currentIndex = index
            }
        }
        Label {
            Layout.fillWidth: true
            visible: !list.visible
            text: qsTr("Nothing is hidden.")
            wrapMode: Text.Wrap
            color: Theme.colors.secondaryText
        }
        Item { Layout.fillHeight: true; visible: !list.visible }
    }
    Connections {
        target: panel.desk.session
        function onSelectionChanged() {
            if (panel.findings.current < 0 || panel.findings.current === list.currentIndex) return;
            list.currentIndex = panel.findings.current;
            list.positionViewAtIndex(list.currentIndex, ListView.Contain);
        }
    }
}
