import QtQuick
import QtQuick.Layouts
import Tavaro.Editor

// What is behind the recording.
SidePage {
    id: page

    required property EditorDesk desk

    BackgroundGallery { desk: page.desk }
    FieldList { session: page.desk.session; fields: page.desk.session.fieldsOf("background"); without: [""] }
}
