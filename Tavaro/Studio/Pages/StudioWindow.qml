import QtQuick
import QtQuick.Controls.Basic

ApplicationWindow {
    title: qsTr("Tavaro")
    width: 1280
    height: 800
    visible: true
}
