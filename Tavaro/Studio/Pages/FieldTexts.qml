import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Style
import Tavaro.Theme

// A list of texts.
ColumnLayout {
    id: texts

    required property var field
    readonly property var shown: field.value ?? []

    function change(index: int, text: string) { field.give(shown.map((each, i) => i === index ? text : each).filter(Boolean)) }

    spacing: 4

    Rows {
        model: texts.shown
        spacing: texts.spacing
        RowLayout {
            id: line

            required property string modelData
            required property int index

            spacing: 2
            TextField {
                Layout.fillWidth: true
                implicitHeight: 28
                text: line.modelData
                Accessible.name: qsTr("%1 %2").arg(texts.field.label).arg(line.index + 1)
                onEditingFinished: if (text !== line.modelData) texts.change(line.index, text)
            }
            ToolButton {
                implicitWidth: 28
                implicitHeight: 28
                icon { source: Theme.icon("x-lg"); width: 10; height: 10 }
                ToolTip.text: qsTr("Remove “%1”").arg(line.modelData)
                onClicked: texts.change(line.index, "")
            }
        }
    }
    TextField {
        Layout.fillWidth: true
        implicitHeight: 28
        placeholderText: qsTr("Add one…")
        Accessible.name: qsTr("Add to %1").arg(texts.field.label)
        onEditingFinished: {
            const added = text;
            clear();
            if (added !== "") texts.field.give(texts.shown.concat([added]));
        }
    }
}
