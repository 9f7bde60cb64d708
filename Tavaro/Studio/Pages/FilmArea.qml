import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Theme

// The film's picture, and what it lacks.
Rectangle {
    id: area

    required property string name
    property EditorDesk desk: null
    readonly property var problems: (desk?.preview.problems ?? []).concat(desk?.preview.playback.soundProblems ?? [])

    color: Theme.colors.sunken

    PreviewItem {
        anchors { fill: parent; margins: 16 }
        preview: area.desk?.preview ?? null
        Accessible.role: Accessible.Graphic
        Accessible.name: qsTr("The film of %1").arg(area.name)
    }
    Rectangle {
        anchors { bottom: parent.bottom; bottomMargin: 12; horizontalCenter: parent.horizontalCenter }
        width: Math.min(problem.implicitWidth + 24, parent.width - 48)
        height: problem.implicitHeight + 16
        radius: Theme.radius
        visible: area.problems.length > 0
        color: Theme.colors.raised
        border { width: 1; color: Theme.colors.line }

        Label {
            id: problem

            anchors { fill: parent; leftMargin: 12; rightMargin: 12 }
            verticalAlignment: Text.AlignVCenter
            text: area.problems[0] ?? ""
            textFormat: Text.PlainText
            elide: Text.ElideRight
        }
    }
}
