import QtQml
import QtQuick
import Tavaro.Editor

// The keys of the editor's commands, while its page is shown.
Item {
    id: keys

    property EditorSession session: null
    property FilmPlayback playback: null

    Instantiator {
        model: keys.session?.commandNames ?? []
        Shortcut {
            required property string modelData
            readonly property EditorCommand command: keys.session?.command(modelData) ?? null

            sequence: command?.shortcut ?? ""
            enabled: command?.enabled ?? false
            onActivated: command.trigger()
        }
    }
    // A control that was reached by the keyboard keeps the key that presses it.
    Shortcut {
        sequence: "Space"
        enabled: keys.playback !== null && !(keys.Window.activeFocusItem?.visualFocus ?? false)
        onActivated: keys.playback.toggle()
    }
}
