import QtQuick
import QtQuick.Layouts
import Tavaro.Editor

// The fields of what is inspected, an editor for each. A field that is in none of a page's other groups is in the group
// that names those it goes without, so that none is ever missing.
ColumnLayout {
    id: list

    required property EditorSession session
    property InspectorModel fields: null
    property alias only: shownFields.only
    property alias without: shownFields.without

    Layout.fillWidth: true
    spacing: 8

    ShownFields {
        id: shownFields

        fields: list.fields
    }
    Repeater {
        model: shownFields
        FieldRow {
            Layout.fillWidth: true
            session: list.session
            fields: list.fields
            group: shownFields
        }
    }
}
