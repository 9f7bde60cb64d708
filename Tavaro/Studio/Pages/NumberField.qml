import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Theme

// A box for one number. What is being typed stays, whatever changes meanwhile.
TextField {
    id: box

    required property string name
    property string unit
    property string shown
    signal given(real number)
    signal stepped(int count)

    property bool isTyped: false

    function restore() { text = shown }
    function finish() {
        const number = NumberText.read(text);
        if (text !== shown && !isNaN(number)) given(number);
        restore();
    }

    implicitWidth: 78
    implicitHeight: 26
    leftPadding: 8
    rightPadding: suffix.visible ? suffix.width + 10 : 8
    onShownChanged: if (!isTyped) restore()
    onTextChanged: isTyped = text !== shown
    horizontalAlignment: TextInput.AlignRight
    Accessible.name: unit ? qsTr("%1 in %2").arg(name).arg(unit) : name
    onEditingFinished: finish()
    onActiveFocusChanged: if (activeFocus) selectAll()
    Keys.onUpPressed: stepped(1)
    Keys.onDownPressed: stepped(-1)
    Keys.onEscapePressed: { restore(); selectAll(); }

    Text {
        id: suffix

        anchors { right: parent.right; rightMargin: 7; verticalCenter: parent.verticalCenter }
        visible: box.unit !== ""
        text: box.unit
        font { family: Theme.face; pixelSize: Theme.captionSize }
        color: Theme.colors.secondaryText
        Accessible.ignored: true
    }
}
