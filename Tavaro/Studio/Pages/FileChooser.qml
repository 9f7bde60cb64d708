import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Files
import Tavaro.Style
import Tavaro.Theme

// Our own dialog for files, where the desktop has none.
Dialog {
    id: chooser

    required property FileChoice choice
    property var picked: [] // paths, where several can be chosen
    readonly property bool isSave: choice.mode === FileChoice.SaveFile
    readonly property bool isForFolder: choice.mode === FileChoice.OpenFolder
    readonly property string target: picked.length === 1 ? picked[0] : field.text !== "" ? rows.resolved(field.text) : isForFolder ? rows.folder : ""
    readonly property bool leadsOn: target !== "" && !isForFolder && rows.isFolder(target)
    readonly property string problem: leadsOn || target === "" && !isSave ? "" : choice.problem(target)
    readonly property bool isReady: picked.length > 1 || target !== "" && problem === ""

    function begin() {
        kinds.currentIndex = 0;
        goTo(choice.beginFolder());
        field.text = choice.beginName();
        open();
    }
    function goTo(folder: string) {
        rows.folder = folder;
        pick([]);
        list.currentIndex = list.count > 0 ? 0 : -1;
        list.positionViewAtBeginning();
    }
    function pick(paths: var) {
        picked = paths;
        if (paths.length === 1) field.text = paths[0].slice(paths[0].lastIndexOf("/") + 1);
        else if (!isSave || paths.length > 1) field.clear();
    }
    // Of a folder only where one is wanted.
    function choose(path: string, isFolder: bool, isMore: bool) {
        const others = picked.filter(each => each !== path);
        if (isFolder && !isForFolder) return;
        if (!isMore || choice.mode !== FileChoice.OpenFiles) pick([path]);
        else pick(others.length < picked.length ? others : others.concat([path]));
    }
    function act(path: string, isFolder: bool) {
        if (isFolder) return goTo(path);
        if (picked.length < 2) pick([path]);
        finish();
    }
    function finish() {
        if (!isReady) return;
        if (leadsOn) { field.clear(); return goTo(target); }
        const paths = picked.length > 1 ? picked : [target];
        accept();
        choice.take(paths);
    }

    title: choice.title
    width: Math.min(640, parent ? parent.width - 32 : 640)
    height: Math.min(560, parent ? parent.height - 32 : 560)
    onOpened: isSave ? field.forceActiveFocus() : list.forceActiveFocus()
    onRejected: choice.rejected()

    FolderRows {
        id: rows

        hasFiles: !chooser.isForFolder
    }

    contentItem: ColumnLayout {
        spacing: 10

        RowLayout {
            Layout.topMargin: 8
            spacing: 4
            ToolButton {
                icon.source: Theme.icon("chevron-up")
                enabled: rows.parentFolder !== ""
                ToolTip.text: qsTr("The folder around this one")
                onClicked: chooser.goTo(rows.parentFolder)
            }
            Button {
                flat: true
                text: qsTr("Home")
                onClicked: chooser.goTo(rows.home())
            }
            Label {
                Layout.fillWidth: true
                Layout.leftMargin: 6
                text: rows.shownFolder
                textFormat: Text.PlainText
                elide: Text.ElideLeft
                Accessible.name: qsTr("Folder: %1").arg(text)
            }
        }
        Rectangle {
            Layout.fillWidth: true
            Layout.fillHeight: true
            radius: Theme.radius
            color: Theme.colors.sunken
            border { width: 1; color: list.activeFocus ? Theme.colors.focus : Theme.colors.line }

            ListView {
                id: list

                anchors { fill: parent; margins: 4 }
                clip: true
                activeFocusOnTab: true
                keyNavigationEnabled: true
                boundsBehavior: Flickable.StopAtBounds
                highlightMoveDuration: 0
                model: rows
                Accessible.role: Accessible.List
                Accessible.name: qsTr("Files")
                ScrollBar.vertical: ScrollBar {}
                Keys.onSpacePressed: if (currentItem) currentItem.chosen(true)
                Keys.onReturnPressed: if (currentItem) currentItem.opened()
                Keys.onEnterPressed: if (currentItem) currentItem.opened()
                Keys.onPressed: event => {
                    if (event.key !== Qt.Key_Backspace) return;
                    event.accepted = true;
                    if (rows.parentFolder !== "") chooser.goTo(rows.parentFolder);
                }

                delegate: FileRow {
                    width: list.width - 10
                    isPicked: chooser.picked.includes(path)
                    hasFocus: ListView.isCurrentItem && list.activeFocus
                    onChosen: isMore => { list.currentIndex = index; chooser.choose(path, isFolder, isMore) }
                    onOpened: chooser.act(path, isFolder)
                }
                Label {
                    anchors.centerIn: parent
                    visible: list.count === 0
                    text: rows.problem || (chooser.isForFolder ? qsTr("No folder is in here.") : qsTr("No such file is in here."))
                    color: Theme.colors.secondaryText
                }
            }
        }
        RowLayout {
            spacing: 8
            Label { text: qsTr("Name"); Accessible.ignored: true }
            TextField {
                id: field

                Layout.fillWidth: true
                placeholderText: chooser.picked.length > 1 ? qsTr("%1 files").arg(chooser.picked.length) : ""
                Accessible.name: qsTr("Name, or a path")
                onTextEdited: chooser.picked = []
                onAccepted: chooser.finish()
            }
            ComboBox {
                id: kinds

                readonly property string filter: chooser.choice.nameFilters[currentIndex] ?? ""

                Layout.preferredWidth: 190
                visible: model.length > 1
                model: chooser.choice.nameFilters.map(each => each.replace(/ \([^()]*\)$/, ""))
                Accessible.name: qsTr("Kinds of files")
                onFilterChanged: rows.globs = chooser.choice.globsOf(filter)
            }
        }
        Label {
            Layout.fillWidth: true
            text: chooser.problem || chooser.choice.remark(chooser.target) || " "
            textFormat: Text.PlainText
            elide: Text.ElideRight
            color: chooser.problem ? Theme.colors.secondaryText : Theme.colors.warning
            font.pixelSize: Theme.captionSize
            Accessible.ignored: text === " "
        }
    }
    footer: RowLayout {
        spacing: 8
        Item { Layout.fillWidth: true }
        Button {
            Layout.bottomMargin: 20
            text: qsTr("Cancel")
            onClicked: chooser.reject()
        }
        Button {
            Layout.rightMargin: 24
            Layout.bottomMargin: 20
            text: chooser.isSave ? qsTr("Save") : chooser.isForFolder ? qsTr("Choose") : qsTr("Open")
            highlighted: true
            enabled: chooser.isReady
            onClicked: chooser.finish()
        }
    }
}
