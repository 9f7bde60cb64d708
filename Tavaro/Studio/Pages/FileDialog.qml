import QtQuick
import Tavaro.Files

// Files are to be chosen: by the desktop's own dialog, or by ours where it has none.
FileChoice {
    id: dialog

    property FileChooser own: null
    property Component making: Component {
        FileChooser { choice: dialog }
    }

    onOwnWanted: {
        if (!window) return rejected();
        if (!own) own = making.createObject(dialog, { parent: window.contentItem });
        own.parent = window.contentItem;
        own.begin();
    }
}
