import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Editor
import Tavaro.Exports
import Tavaro.Style
import Tavaro.Theme

// What is to be made of the film, where it goes, and what that takes.
Dialog {
    id: dialog

    required property ExportForm form
    readonly property var places: form.places

    function ask(session: EditorSession) {
        form.begin(session);
        title = qsTr("Export “%1”").arg(session.name);
        open();
    }
    function submit() {
        if (form.submit()) close();
    }

    parent: Overlay.overlay
    width: Math.min(860, parent ? parent.width - 32 : 860)
    bottomPadding: 8

    // In a window that is too low for all of it, it scrolls.
    contentItem: ScrollView {
        id: view

        implicitHeight: body.implicitHeight
        contentWidth: availableWidth
        clip: true

        ColumnLayout {
            id: body

            width: view.availableWidth - (implicitHeight > view.height ? 16 : 0) // beside the scroll bar
            spacing: 14
            Keys.onReturnPressed: dialog.submit()
            Keys.onEnterPressed: dialog.submit()

            Grid {
                id: cards

                Layout.fillWidth: true
                columns: 4
                columnSpacing: 10
                rowSpacing: 10
                Accessible.role: Accessible.Grouping
                Accessible.name: qsTr("Where it goes")
                Repeater {
                    model: dialog.places.length // so that no card is made anew, and loses the keyboard
                    ExportPlaceCard {
                        required property int index
                        readonly property var place: dialog.places[index]

                        width: Math.floor((cards.width - 3 * cards.columnSpacing) / 4) // or the last one's edge is cut
                        title: place?.title ?? ""
                        detail: place?.detail ?? ""
                        picture: place?.picture ?? ""
                        size: place?.size ?? ""
                        time: place?.time ?? ""
                        sign: place?.icon ?? ""
                        checked: dialog.form.place === place?.id
                        onClicked: dialog.form.place = place.id
                    }
                }
            }
            Segmented {
                name: qsTr("For")
                visible: options.length > 0
                options: dialog.form.ways
                value: dialog.form.preset
                onChosen: value => dialog.form.preset = value
            }
            ExportCustom {
                Layout.fillWidth: true
                visible: dialog.form.place === "custom"
                form: dialog.form
            }
            Flow {
                Layout.fillWidth: true
                spacing: 20
                Switch {
                    visible: !dialog.form.isGIF && dialog.form.place !== "captions"
                    text: qsTr("Sound")
                    checked: dialog.form.sound
                    onToggled: dialog.form.sound = checked
                }
                Switch {
                    visible: dialog.form.range !== ""
                    text: qsTr("Only the marked part, %1").arg(dialog.form.range)
                    checked: dialog.form.rangeOnly
                    onToggled: dialog.form.rangeOnly = checked
                }
                Switch {
                    visible: dialog.form.hasCaptions && dialog.form.place !== "captions"
                    text: qsTr("Captions as a file beside it")
                    checked: dialog.form.captionsBeside
                    onToggled: dialog.form.captionsBeside = checked
                }
                Switch {
                    visible: dialog.form.isScanDue
                    text: qsTr("Wait until private text is hidden")
                    checked: dialog.form.awaitsScan
                    onToggled: dialog.form.awaitsScan = checked
                    Accessible.description: ToolTip.text
                    ToolTip.visible: hovered || visualFocus
                    ToolTip.text: qsTr("The take is still being looked at: what was not found yet is legible")
                }
                Switch {
                    visible: dialog.form.canCheck
                    text: qsTr("Check the finished film")
                    checked: dialog.form.checksFilm
                    onToggled: dialog.form.checksFilm = checked
                    Accessible.description: ToolTip.text
                    ToolTip.visible: hovered || visualFocus
                    ToolTip.text: qsTr("Reads it again, and says whether anything private is legible")
                }
                Switch {
                    visible: dialog.form.place !== "captions"
                    text: qsTr("“Made with Tavaro” on it")
                    checked: dialog.form.watermark
                    onToggled: dialog.form.watermark = checked
                }
            }
            ExportTarget {
                Layout.fillWidth: true
                form: dialog.form
            }
        }
    }
    footer: RowLayout {
        spacing: Theme.gap

        Label {
            Layout.fillWidth: true
            Layout.leftMargin: 24
            Layout.bottomMargin: 24
            text: dialog.form.outcome
            elide: Text.ElideRight
            color: Theme.colors.secondaryText
        }
        Button {
            Layout.bottomMargin: 24
            text: qsTr("Cancel")
            onClicked: dialog.close()
        }
        Button {
            Layout.bottomMargin: 24
            Layout.rightMargin: 24
            text: qsTr("Export")
            highlighted: true
            focus: true
            enabled: dialog.form.problem === ""
            onClicked: dialog.submit()
            Accessible.name: qsTr("Export the film")
        }
    }
}
