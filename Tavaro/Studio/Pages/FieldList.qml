import QtQuick
import Tavaro.Editor
import Tavaro.Style

// The fields of what is inspected, an editor for each. A field that is in none of a page's other groups is in the group
// that names those it goes without, so that none is ever missing.
Rows {
    id: list

    required property EditorSession session
    property InspectorModel fields: null
    property alias only: shownFields.only
    property alias without: shownFields.without

    spacing: 8
    model: ShownFields {
        id: shownFields

        fields: list.fields
    }
    FieldRow {
        session: list.session
        fields: list.fields
        group: shownFields
    }
}
