import QtQml
import QtQuick.Controls
import Tavaro.Editor

// Commands of the editor, by their names.
Menu {
    id: menu

    property EditorSession session: null
    property var names: []

    // Not `removeItem`, which deletes at once what the Instantiator deletes once nobody looks at it any more.
    function take(item: Item) {
        for (let i = count; i-- > 0;) if (itemAt(i) === item) takeItem(i);
    }

    width: 272 // of the longest title with its shortcut

    Instantiator {
        model: menu.names
        delegate: CommandItem {
            required property string modelData

            name: modelData
            session: menu?.session ?? null // a row that goes is asked once more when the menu is not its any more
        }
        onObjectAdded: (index, object) => menu.insertItem(index, object)
        onObjectRemoved: (index, object) => menu.take(object)
    }
}
