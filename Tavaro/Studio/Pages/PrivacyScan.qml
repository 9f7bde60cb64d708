import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tavaro.Privacy
import Tavaro.Style
import Tavaro.Theme

// The search for private text: begun, watched and stopped here, with what is known of the last one.
ColumnLayout {
    id: scan

    required property ScanRun run

    component Hint: Label {
        Layout.fillWidth: true
        visible: text !== ""
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        color: Theme.colors.secondaryText
        font.pixelSize: Theme.captionSize
    }

    spacing: 6

    Button {
        Layout.fillWidth: true
        visible: !scan.run.isRunning
        highlighted: !scan.run.isWhole
        enabled: scan.run.canStart
        text: scan.run.isWhole ? qsTr("Look again") : qsTr("Find private text")
        icon.source: Theme.icon("shield-lock")
        onClicked: scan.run.start()
    }
    RowLayout {
        visible: scan.run.isRunning
        spacing: 10
        ProgressBar {
            Layout.fillWidth: true
            indeterminate: scan.run.progress < 0
            value: Math.max(0, scan.run.progress)
            Accessible.name: qsTr("Recording looked at")
        }
        Button {
            text: scan.run.isStopping ? qsTr("Stopping…") : qsTr("Stop")
            enabled: !scan.run.isStopping
            Accessible.name: qsTr("Stop looking for private text")
            onClicked: scan.run.stop()
        }
    }
    Hint {
        visible: scan.run.isRunning
        text: qsTr("%1, %2 found").arg(scan.run.state).arg(scan.run.found)
    }
    Hint {
        text: scan.run.failure
        color: Theme.colors.dangerText
        Accessible.role: Accessible.AlertMessage
    }
    Hint {
        text: scan.run.result
        color: Theme.colors.text
        Accessible.role: Accessible.AlertMessage
    }
    Hint { text: scan.run.isRunning ? "" : scan.run.lastScan }
    Hint { text: scan.run.looksFor }
    Rows {
        spacing: 4
        model: scan.run.remarks
        Hint {
            required property string modelData

            text: modelData
            color: Theme.colors.dangerText
        }
    }
}
