import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Privacy
import Tavaro.Style
import Tavaro.Theme

// What counts as private in this film: kinds, own words, own patterns, and which of these is wrong.
SidePage {
    id: page

    required property EditorDesk desk
    readonly property EditorSession session: desk.session
    readonly property PrivacyDesk privacy: desk.privacy

    Rows {
        spacing: 4
        model: page.privacy.run.remarks
        Label {
            required property string modelData

            text: modelData
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            color: Theme.colors.dangerText
            Accessible.role: Accessible.AlertMessage
        }
    }
    FieldList { session: page.session; fields: page.session.fieldsOf("redactionSettings") }
}
