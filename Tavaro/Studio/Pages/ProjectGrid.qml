import QtQuick
import QtQuick.Controls
import Tavaro.Files
import Tavaro.Library
import Tavaro.Style
import Tavaro.Theme

GridView {
    id: grid

    readonly property int columns: Math.max(1, Math.floor((width - leftMargin - 12) / 256))
    // The card that the menu and the dialogs are of.
    property string chosenPath
    property string chosenName

    function showMenu(card: Item, path: string, name: string) {
        chosenPath = path;
        chosenName = name;
        menu.parent = card;
        menu.popup(card, Math.max(0, card.width - menu.width), card.height - 24);
    }

    leftMargin: Theme.pageMargin - 8
    rightMargin: 12
    topMargin: 4
    bottomMargin: 24
    cellWidth: Math.floor((width - leftMargin - rightMargin - 12) / columns)
    cellHeight: Math.round((cellWidth - 16) * 9 / 16) + 72
    clip: true
    model: Library.projects
    keyNavigationEnabled: true
    boundsBehavior: Flickable.StopAtBounds
    activeFocusOnTab: true
    reuseItems: false
    Accessible.role: Accessible.List
    Accessible.name: qsTr("Projects")
    ScrollBar.vertical: ScrollBar {}
    onActiveFocusChanged: if (activeFocus && currentIndex < 0 && count > 0) currentIndex = 0

    delegate: ProjectCard {
        width: grid.cellWidth
        height: grid.cellHeight
        isCurrent: GridView.isCurrentItem && grid.activeFocus
        onMenuRequested: grid.showMenu(this, path, name)
        onFocused: { grid.currentIndex = index; grid.forceActiveFocus(); }
    }
    Keys.onReturnPressed: if (currentItem) currentItem.openProject()
    Keys.onEnterPressed: if (currentItem) currentItem.openProject()
    Keys.onSpacePressed: if (currentItem) currentItem.openProject()
    Keys.onMenuPressed: if (currentItem) currentItem.menuRequested()
    Keys.onDeletePressed: if (currentItem) Library.moveToTrash(currentItem.path)
    Keys.onPressed: event => {
        if (event.key !== Qt.Key_F2 || !currentItem) return;
        currentItem.rename();
        event.accepted = true;
    }

    Menu {
        id: menu

        MenuItem { text: qsTr("Open"); icon.source: Theme.icon("folder2-open"); onTriggered: Library.openRequested(grid.chosenPath) }
        MenuItem { text: qsTr("Rename"); icon.source: Theme.icon("pencil"); onTriggered: menu.parent.rename() }
        MenuItem { text: qsTr("Duplicate"); icon.source: Theme.icon("layers"); onTriggered: Library.duplicate(grid.chosenPath) }
        MenuItem {
            text: qsTr("Archive…")
            icon.source: Theme.icon("archive")
            onTriggered: {
                archive.currentFile = Library.archiveFor(grid.chosenPath);
                archive.open();
            }
        }
        MenuSeparator {}
        MenuItem {
            text: qsTr("Move to the trash")
            icon.source: Theme.icon("trash")
            isDangerous: true
            onTriggered: Library.moveToTrash(grid.chosenPath)
        }
    }
    FileDialog {
        id: archive

        title: qsTr("Pack “%1” into an archive").arg(grid.chosenName)
        mode: FileChoice.SaveFile
        defaultSuffix: "zip"
        nameFilters: [qsTr("Archives (*.zip)")]
        onAccepted: Library.archive(grid.chosenPath, selectedFile)
    }
}
