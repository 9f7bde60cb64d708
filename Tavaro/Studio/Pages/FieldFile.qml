import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Theme

// A media file, which is copied into the project.
RowLayout {
    id: file

    required property var field
    readonly property string asset: field.value ?? ""
    property string wanted

    function take(chosen: url) {
        wanted = NumberText.path(chosen);
        field.session.importFile(wanted);
    }

    spacing: 4

    Label {
        Layout.fillWidth: true
        text: file.asset || qsTr("None")
        elide: Text.ElideMiddle
        color: Theme.colors.secondaryText
    }
    ToolButton {
        visible: file.field.isOptional && file.asset !== ""
        icon { source: Theme.icon("x-lg"); width: 10; height: 10 }
        ToolTip.text: qsTr("Go without %1").arg(file.asset)
        onClicked: file.field.give(undefined)
    }
    Button {
        text: qsTr("Choose…")
        Accessible.name: qsTr("Choose a file: %1").arg(file.field.label)
        onClicked: dialog.open()
    }
    FileDialog {
        id: dialog

        title: file.field.label
        onAccepted: file.take(selectedFile)
    }
    Connections {
        target: file.field.session
        function onImported(path: string, asset: string) {
            if (path !== file.wanted) return;
            file.wanted = "";
            file.field.give(asset);
        }
    }
}
