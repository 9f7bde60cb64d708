import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Style
import Tavaro.Theme

// A page of the side panel that has several views.
Item {
    id: page

    required property EditorDesk desk
    required property var views
    property int view: 0

    function show() { shown.setSource(views[view].source, { desk: desk }) }

    onViewChanged: show()
    Component.onCompleted: show()

    Segmented {
        id: choice

        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 12 }
        name: qsTr("Views of the page")
        options: page.views.map((each, index) => ({ text: each.title, value: index }))
        value: page.view
        onChosen: value => page.view = value
    }
    Loader {
        id: shown

        anchors { left: parent.left; right: parent.right; top: choice.bottom; bottom: parent.bottom }
        Accessible.role: Accessible.Pane
        Accessible.name: page.views[page.view].title
    }
}
