import QtQml
import QtQuick.Controls
import Tavaro.Editor

// Every command of the editor, in the groups of their table.
Menu {
    id: menu

    property EditorSession session: null
    readonly property var names: session?.commandNames ?? []

    function group(name: string): string { return session?.command(name)?.group ?? "" }

    Instantiator {
        model: [...new Set(menu.names.map(menu.group))]
        delegate: CommandMenu {
            required property string modelData

            title: modelData
            session: menu.session
            names: menu.names.filter(name => menu.group(name) === modelData)
        }
        onObjectAdded: (index, object) => menu.insertMenu(index, object)
        onObjectRemoved: (index, object) => menu.removeMenu(object)
    }
}
