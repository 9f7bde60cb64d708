import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Theme

// A field: its name, what switches it on where it need not be there, its editor, and why a value was refused.
ColumnLayout {
    id: row

    required property EditorSession session
    required property InspectorModel fields
    required property ShownFields group

    required property string path
    required property string label
    required property string unit
    required property real least
    required property real most
    required property real step
    required property real shownFactor
    required property string editor
    required property var value
    required property bool isSet
    required property bool isOptional
    required property bool isReadOnly
    required property bool isMixed
    required property var choices
    required property int depth
    // What is typed for one thing is not given to another.
    readonly property string subject: fields.subject

    readonly property bool isSection: editor === "section"
    readonly property bool hasSwitch: isOptional && !isReadOnly && !["choice", "text", "file"].includes(editor)
    readonly property bool isRanged: most > least
    readonly property int inset: isSection ? 0 : Math.max(0, depth - group.depth) * 12
    property var options: [] // the choices, which are given anew with every value: nothing is made anew under a hand
    property string problem

    // What an editor shows is the document's again.
    signal restored

    function give(value: var): bool {
        problem = "";
        return fields.set(path, value);
    }

    spacing: 2

    Component { id: readingEditor; FieldReading { field: row } }
    Component { id: boxEditor; FieldNumber { field: row } }
    Component { id: toggleEditor; FieldToggle { field: row } }
    Component { id: colorEditor; FieldColor { field: row } }
    Component { id: sliderEditor; FieldSlider { field: row } }
    Component { id: choiceEditor; FieldChoice { field: row } }
    Component { id: choicesEditor; FieldChoices { field: row } }
    Component { id: colorsEditor; FieldColors { field: row } }
    Component { id: textEditor; FieldText { field: row } }
    Component { id: textsEditor; FieldTexts { field: row } }
    Component { id: fileEditor; FieldFile { field: row } }
    Component { id: partsEditor; FieldParts { field: row } }

    Connections {
        target: row.fields
        function onRefused(sentence: string, path: string) {
            if (path !== row.path) return;
            row.problem = sentence;
            row.restored();
        }
    }
    onValueChanged: problem = ""
    onSubjectChanged: { problem = ""; restored(); }
    onChoicesChanged: if (JSON.stringify(choices) !== JSON.stringify(options)) options = choices

    RowLayout {
        Layout.fillWidth: true
        Layout.leftMargin: row.inset
        spacing: 6

        FieldHeading {
            Layout.fillWidth: true
            visible: row.isSection && row.isSet || row.isSection && !row.isOptional
            text: row.label
            isFolded: row.group.folded.includes(row.path)
            onClicked: row.group.toggle(row.path)
        }
        Label {
            Layout.fillWidth: true
            Layout.minimumHeight: 26
            visible: !row.isSection || row.isOptional && !row.isSet
            text: row.label
            wrapMode: Text.Wrap
            verticalAlignment: Text.AlignVCenter
            font.weight: row.isSection ? Font.DemiBold : Font.Normal
        }
        Label {
            visible: row.isMixed && !row.hasSwitch
            text: qsTr("Mixed")
            color: Theme.colors.secondaryText
            font.pixelSize: Theme.captionSize
        }
        Loader {
            active: row.isSet || !row.isOptional
            visible: active && sourceComponent !== null
            sourceComponent: row.isReadOnly ? readingEditor
                : ({ number: boxEditor, wholeNumber: boxEditor, toggle: toggleEditor, color: colorEditor })[row.editor] ?? null
        }
        Switch {
            visible: row.hasSwitch
            checked: row.isSet
            Accessible.name: row.label
            onToggled: {
                row.problem = "";
                row.fields.switchOn(row.path, checked);
                checked = Qt.binding(() => row.isSet);
            }
        }
    }
    Loader {
        Layout.fillWidth: true
        Layout.leftMargin: row.inset
        active: !row.isReadOnly && (row.isSet || !row.hasSwitch)
        visible: active && sourceComponent !== null
        sourceComponent: ({
            number: row.isRanged ? sliderEditor : null, wholeNumber: row.isRanged ? sliderEditor : null,
            choice: choiceEditor, choices: choicesEditor, colors: colorsEditor, text: textEditor, texts: textsEditor,
            file: fileEditor, point: partsEditor, rect: partsEditor, size: partsEditor
        })[row.editor] ?? null
    }
    Label {
        Layout.fillWidth: true
        visible: text !== ""
        text: row.problem
        wrapMode: Text.Wrap
        color: Theme.colors.dangerText
        font.pixelSize: Theme.captionSize
        Accessible.role: Accessible.AlertMessage
        Accessible.name: text
    }
}
