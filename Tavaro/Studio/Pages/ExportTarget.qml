import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Exports
import Tavaro.Files
import Tavaro.Style
import Tavaro.Theme

// Where the film's file will be, and what there is to say of that.
GridLayout {
    id: target

    required property ExportForm form

    columns: 3
    columnSpacing: 12
    rowSpacing: 8

    FileDialog {
        id: picker

        title: qsTr("Export into a folder")
        mode: FileChoice.OpenFolder
        currentFolder: target.form.folderUrl
        onAccepted: target.form.folderUrl = selectedFolder
    }
    Label { text: qsTr("Name") }
    TextField {
        Layout.fillWidth: true
        text: target.form.name
        placeholderText: target.form.suggestion
        onTextEdited: target.form.name = text
        Accessible.name: qsTr("Name of the file")
    }
    Label { text: target.form.ending; color: Theme.colors.secondaryText }
    Label { text: qsTr("Folder") }
    Label {
        Layout.fillWidth: true
        text: target.form.folder
        textFormat: Text.PlainText
        elide: Text.ElideMiddle
        color: Theme.colors.secondaryText
        Accessible.name: qsTr("Folder: %1").arg(text)
    }
    Button {
        text: qsTr("Choose…")
        onClicked: picker.open()
        Accessible.name: qsTr("Choose the folder…")
    }
    Label {
        Layout.columnSpan: 3
        Layout.fillWidth: true
        text: target.form.problem || target.form.remark || " "
        textFormat: Text.PlainText
        elide: Text.ElideRight
        color: target.form.problem ? Theme.colors.dangerText : Theme.colors.warning
        font.pixelSize: Theme.captionSize
        Accessible.ignored: text === " "
    }
}
