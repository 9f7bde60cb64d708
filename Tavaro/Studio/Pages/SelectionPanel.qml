import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Theme

// What is selected on the timeline or the film.
SidePage {
    id: page

    required property EditorDesk desk
    readonly property EditorSession session: desk.session
    readonly property InspectorModel fields: session.fields
    readonly property bool isEmpty: session.selection.length === 0

    title: isEmpty ? qsTr("Selection") : fields.title

    Label {
        Layout.fillWidth: true
        visible: page.isEmpty
        text: qsTr("Select a clip, a zoom, a text or anything else on the timeline to change it here.")
        wrapMode: Text.Wrap
        color: Theme.colors.secondaryText
    }
    RowLayout {
        visible: !page.isEmpty
        spacing: 2
        EditorButton { session: page.session; name: "duplicate"; picture: "collection" }
        EditorButton { session: page.session; name: "delete"; picture: "trash" }
        EditorButton { session: page.session; name: "clearSelection"; picture: "x-lg" }
    }
    FieldList {
        visible: !page.isEmpty
        session: page.session
        fields: page.isEmpty ? null : page.fields
    }
}
