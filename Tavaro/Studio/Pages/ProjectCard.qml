import QtQuick
import QtQuick.Controls
import Tavaro.Library
import Tavaro.Style
import Tavaro.Theme

Item {
    id: card

    required property int index
    required property string path
    required property string name
    required property string length
    required property string age
    required property string still
    required property string problem
    required property string summary
    property bool isCurrent
    readonly property bool isLit: hover.hovered || isCurrent
    signal menuRequested
    signal focused

    function openProject() {
        if (problem) Library.failed(problem);
        else Library.openRequested(path);
    }
    function rename() {
        if (problem) return Library.failed(problem);
        title.visible = false;
        field.text = name;
        field.visible = true;
        field.selectAll();
        field.forceActiveFocus();
    }

    Accessible.role: Accessible.ListItem
    Accessible.name: summary
    Accessible.focusable: true
    Accessible.onPressAction: openProject()

    HoverHandler { id: hover }
    TapHandler {
        acceptedButtons: Qt.LeftButton
        onTapped: { card.focused(); card.openProject(); }
    }
    TapHandler {
        acceptedButtons: Qt.RightButton
        onTapped: { card.focused(); card.menuRequested(); }
    }
    Rectangle {
        anchors { fill: parent; margins: 2 }
        radius: Theme.cardRadius
        color: card.isLit ? Theme.colors.hover : "transparent"
        border { width: card.isCurrent ? 2 : 0; color: Theme.colors.focus }
    }
    Rectangle {
        id: frame

        x: 8
        y: 8
        width: parent.width - 16
        height: Math.round(width * 9 / 16)
        radius: width * 0.03
        color: Theme.colors.sunken
        border { width: picture.status === Image.Ready ? 0 : 1; color: Theme.colors.line }
        Icon {
            anchors.centerIn: parent
            visible: picture.status !== Image.Ready
            icon: card.problem ? "exclamation-triangle" : "film"
            size: 28
            color: Theme.colors.disabledText
        }
        Image {
            id: picture

            anchors.fill: parent
            asynchronous: true
            source: card.still
            sourceSize: Qt.size(Math.round(frame.width * Screen.devicePixelRatio), Math.round(frame.height * Screen.devicePixelRatio))
            Accessible.ignored: true
        }
        Rectangle {
            anchors { right: parent.right; bottom: parent.bottom; margins: 8 }
            visible: card.length !== ""
            width: time.implicitWidth + 12
            height: 20
            radius: 5
            color: Theme.colors.filmLabel
            Label {
                id: time

                anchors.centerIn: parent
                text: card.length
                color: Theme.colors.onFilm
                font { pixelSize: Theme.captionSize; weight: Font.Medium }
                Accessible.ignored: true
            }
        }
    }
    Label {
        id: title

        anchors { left: frame.left; right: more.left; top: frame.bottom; leftMargin: 2; topMargin: 10 }
        text: card.name
        elide: Text.ElideRight
        maximumLineCount: 1 // a name may have more
        font.weight: Font.DemiBold
        Accessible.ignored: true
    }
    TextField {
        id: field

        function end(isKept: bool) {
            if (!visible) return;
            visible = false;
            focus = false; // else the grid gives it the keyboard again
            title.visible = true;
            if (isKept) Library.rename(card.path, text);
        }

        anchors { left: frame.left; right: frame.right; top: frame.bottom; topMargin: 4 }
        visible: false
        implicitHeight: 28
        Accessible.name: qsTr("New name of %1").arg(card.name)
        onAccepted: { end(true); card.focused(); }
        Keys.onEscapePressed: { end(false); card.focused(); }
        onActiveFocusChanged: if (!activeFocus) end(true)
    }
    Label {
        anchors { left: title.left; right: more.left; top: title.bottom; topMargin: 2 }
        visible: !field.visible
        text: card.problem ? qsTr("Cannot be opened") : card.age
        color: card.problem ? Theme.colors.warning : Theme.colors.secondaryText
        elide: Text.ElideRight
        font.pixelSize: Theme.captionSize
        Accessible.ignored: true
    }
    ToolButton {
        id: more

        anchors { right: frame.right; top: frame.bottom; topMargin: 8 }
        focusPolicy: Qt.NoFocus
        icon.source: Theme.icon("three-dots")
        ToolTip.text: qsTr("More for %1").arg(card.name)
        onClicked: card.menuRequested()
    }
}
