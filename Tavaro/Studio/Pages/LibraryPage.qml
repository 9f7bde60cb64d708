import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Files
import Tavaro.Library
import Tavaro.Style
import Tavaro.Theme

Item {
    id: page

    signal record

    Shortcut { sequences: [StandardKey.Find]; onActivated: search.forceActiveFocus() }
    Shortcut { sequences: [StandardKey.Open]; onActivated: picker.open() }

    FileDialog {
        id: picker

        title: qsTr("Bring in movies and archives")
        mode: FileChoice.OpenFiles
        nameFilters: [qsTr("Movies and archives (*.mp4 *.mov *.mkv *.webm *.m4v *.avi *.zip)"), qsTr("All files (*)")]
        onAccepted: Library.bring(selectedFiles)
    }
    EmptyLibrary {
        anchors.fill: parent
        visible: Library.isLoaded && Library.isEmpty
        onBring: picker.open()
        onRecord: page.record()
    }
    ColumnLayout {
        anchors.fill: parent
        visible: Library.isLoaded && !Library.isEmpty
        spacing: 0

        RowLayout {
            Layout.fillWidth: true
            Layout.margins: Theme.pageMargin
            Layout.topMargin: 24
            Layout.bottomMargin: 16
            spacing: 12

            Label {
                Layout.fillWidth: true
                text: qsTr("Library")
                font { pixelSize: Theme.titleSize; weight: Font.DemiBold }
                Accessible.role: Accessible.Heading
            }
            SearchField {
                id: search

                Layout.preferredWidth: 240
                placeholderText: qsTr("Search projects")
                onTextChanged: Library.projects.search = text
                Keys.onDownPressed: grid.forceActiveFocus()
                Component.onCompleted: text = Library.projects.search
            }
            ComboBox {
                id: order

                textRole: "text"
                valueRole: "value"
                Accessible.name: qsTr("Order")
                model: [
                    { text: qsTr("Last edited"), value: "edited" },
                    { text: qsTr("Name"), value: "name" },
                    { text: qsTr("Length"), value: "length" }
                ]
                onActivated: Library.projects.order = currentValue
                Component.onCompleted: currentIndex = indexOfValue(Library.projects.order)
            }
            Button {
                text: qsTr("Bring in…")
                icon.source: Theme.icon("plus-lg")
                onClicked: picker.open()
            }
        }
        TakeList {
            Layout.fillWidth: true
            Layout.leftMargin: Theme.pageMargin
            Layout.rightMargin: Theme.pageMargin
        }
        Label {
            Layout.fillWidth: true
            Layout.margins: Theme.pageMargin
            visible: Library.projects.count === 0 && search.text !== ""
            text: qsTr("No project is named “%1”.").arg(search.text)
            color: Theme.colors.secondaryText
            horizontalAlignment: Text.AlignHCenter
        }
        ProjectGrid {
            id: grid

            Layout.fillWidth: true
            Layout.fillHeight: true
        }
    }
}
