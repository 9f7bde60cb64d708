import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Exports
import Tavaro.Style
import Tavaro.Theme

// A film's size, rate and format by the user's own numbers.
GridLayout {
    id: custom

    required property ExportForm form

    columns: 4
    columnSpacing: 16
    rowSpacing: 8

    Label { text: qsTr("Size") }
    RowLayout {
        spacing: 6
        SpinBox {
            from: 16; to: 8192; stepSize: 2
            textFromValue: value => String(value) // without separators
            value: custom.form.width
            onValueModified: custom.form.width = value
            Accessible.name: qsTr("Width in pixels")
        }
        Label { text: "×"; Accessible.ignored: true }
        SpinBox {
            from: 16; to: 8192; stepSize: 2
            textFromValue: value => String(value) // without separators
            value: custom.form.height
            onValueModified: custom.form.height = value
            Accessible.name: qsTr("Height in pixels")
        }
        ToolButton {
            checkable: true
            checked: custom.form.keepsShape
            icon.source: Theme.icon("lock")
            ToolTip.text: qsTr("Keep the shape of the canvas")
            onToggled: custom.form.keepsShape = checked
        }
    }
    Label { text: qsTr("Format") }
    ComboBox {
        Layout.fillWidth: true
        model: custom.form.formats
        textRole: "text"
        valueRole: "value"
        currentIndex: custom.form.formats.findIndex(format => format.value === custom.form.format)
        onActivated: custom.form.format = currentValue
        Accessible.name: qsTr("Format")
    }
    Label { text: qsTr("Frames a second") }
    SpinBox {
        from: 1; to: custom.form.fastest
        value: custom.form.rate
        onValueModified: custom.form.rate = value
        Accessible.name: qsTr("Frames a second")
    }
    Label { text: qsTr("Quality"); visible: custom.form.hasBitrate }
    ComboBox {
        readonly property var usual: [0, 1000, 2000, 4000, 8000, 12000, 20000, 40000, 80000]
        readonly property int chosen: custom.form.kilobits
        // Any other comes from a project that was set up elsewhere.
        readonly property var rates: usual.includes(chosen) ? usual : usual.concat([chosen]).sort((a, b) => a - b)

        Layout.fillWidth: true
        visible: custom.form.hasBitrate
        model: rates.map(rate => rate === 0 ? qsTr("As the size needs it") : qsTr("%1 Mbit/s").arg(rate / 1000))
        currentIndex: rates.indexOf(chosen)
        onActivated: index => custom.form.kilobits = rates[index]
        Accessible.name: qsTr("Quality")
    }
    Label { text: qsTr("The recording") }
    Segmented {
        name: qsTr("How the recording fills the canvas")
        options: [
            { text: qsTr("Fits"), value: "fit" },
            { text: qsTr("Fills"), value: "fill" },
            { text: qsTr("Is stretched"), value: "stretch" }
        ]
        value: custom.form.fit
        onChosen: value => custom.form.fit = value
    }
}
