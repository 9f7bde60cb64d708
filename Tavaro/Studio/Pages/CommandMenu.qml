import QtQml
import QtQuick.Controls
import Tavaro.Editor

// Commands of the editor, by their names.
Menu {
    id: menu

    property EditorSession session: null
    property var names: []

    width: 272 // of the longest title with its shortcut

    Instantiator {
        model: menu.names
        delegate: CommandItem {
            required property string modelData

            name: modelData
            session: menu.session
        }
        onObjectAdded: (index, object) => menu.insertItem(index, object)
        onObjectRemoved: (index, object) => menu.removeItem(object)
    }
}
