import QtQuick
import QtQuick.Controls
import Tavaro.Style
import Tavaro.Theme

// Somewhere that a film can go, with what that takes.
RadioButton {
    id: card

    required property string title
    required property string detail
    required property string picture
    required property string size
    required property string time
    required property string sign
    readonly property string cost: [size, time].filter(Boolean).join(" · ")

    implicitHeight: 104
    focusPolicy: Qt.StrongFocus
    Accessible.name: [title, detail, picture, cost].filter(Boolean).join(", ")
    Keys.onReturnPressed: Reach.press(card)
    Keys.onEnterPressed: Reach.press(card)

    indicator: null
    background: Rectangle {
        radius: Theme.cardRadius
        color: card.checked ? Theme.colors.selection : card.hovered ? Theme.colors.hover : Theme.colors.surface
        border { width: card.checked ? 2 : 1; color: card.checked ? Theme.colors.accent : Theme.colors.line }
        FocusRing { control: card }
    }
    contentItem: Item {
        Icon {
            id: sign

            anchors { left: parent.left; top: parent.top; leftMargin: 12; topMargin: 14 }
            icon: card.sign
            color: card.checked ? Theme.colors.accentText : Theme.colors.secondaryText
        }
        Label {
            anchors { left: sign.right; right: parent.right; verticalCenter: sign.verticalCenter; leftMargin: 8; rightMargin: 8 }
            text: card.title
            font.weight: Font.DemiBold
            elide: Text.ElideRight
            Accessible.ignored: true
        }
        Column {
            anchors { left: parent.left; right: parent.right; top: sign.bottom; leftMargin: 12; rightMargin: 8; topMargin: 10 }
            spacing: 2
            Repeater {
                model: [card.detail, card.picture, card.cost].filter(Boolean)
                Label {
                    required property string modelData

                    width: parent.width
                    text: modelData
                    color: Theme.colors.secondaryText
                    font.pixelSize: Theme.captionSize
                    elide: Text.ElideRight
                    Accessible.ignored: true
                }
            }
        }
    }
}
