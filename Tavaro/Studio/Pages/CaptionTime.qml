import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Theme

// A moment of the film, which can be typed.
TextField {
    id: field

    required property CaptionEditor captions
    property double seconds: 0
    signal chosen(double seconds)

    function reset() { text = Qt.binding(() => captions.timeText(seconds)) }
    function end() {
        const wanted = captions.timeOf(text);
        if (wanted >= 0 && text !== captions.timeText(seconds)) chosen(wanted);
        reset();
    }

    implicitWidth: Math.max(58, contentWidth + leftPadding + rightPadding + 2)
    implicitHeight: 28
    leftPadding: 6
    rightPadding: 6
    font.pixelSize: Theme.captionSize
    onEditingFinished: end()
    Keys.onEscapePressed: reset()
    Component.onCompleted: reset()
}
