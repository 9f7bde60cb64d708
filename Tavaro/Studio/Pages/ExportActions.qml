import QtQuick
import Tavaro.Editor
import Tavaro.Exports
import Tavaro.Files
import Tavaro.Program

// What the editor's commands want of the window: exports and frames.
Item {
    id: actions

    property EditorSession session: null
    readonly property ExportsDesk exports: Studio.exports

    function saveFrame() {
        frame.currentFile = exports.frames.fileFor(session);
        frame.open();
    }

    Connections {
        target: actions.session
        function onWanted(command: string) {
            if (command === "export") dialog.ask(actions.session);
            else if (command === "exportAgain" && !actions.exports.form.repeat(actions.session)) dialog.ask(actions.session);
            else if (command === "copyFrame") actions.exports.frames.copy(actions.session);
            else if (command === "saveFrame") actions.saveFrame();
        }
    }
    ExportDialog { id: dialog; form: actions.exports.form }
    FileDialog {
        id: frame

        title: qsTr("Save the frame as a picture")
        mode: FileChoice.SaveFile
        defaultSuffix: "png"
        nameFilters: [qsTr("Pictures (*.png)")]
        onAccepted: actions.exports.frames.save(actions.session, selectedFile)
    }
}
