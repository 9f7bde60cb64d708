import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Theme

// What is before and behind the film, and its mark.
SidePage {
    id: page

    required property EditorDesk desk
    readonly property EditorSession session: desk.session

    FieldList { session: page.session; fields: page.session.fieldsOf("intro") }
    Rectangle { Layout.fillWidth: true; implicitHeight: 1; color: Theme.colors.line }
    FieldList { session: page.session; fields: page.session.fieldsOf("outro") }
    Rectangle { Layout.fillWidth: true; implicitHeight: 1; color: Theme.colors.line }
    FieldList { session: page.session; fields: page.session.fieldsOf("export"); only: ["includeWatermark"] }
}
