import QtQuick
import QtQuick.Controls.impl
import Tavaro.Theme

// A picture that says nothing to who cannot see it: what it stands beside has the name.
IconImage {
    property string icon
    property int size: Theme.iconSize

    source: icon ? Theme.icon(icon) : ""
    sourceSize { width: size; height: size }
    width: size
    height: size
    color: Theme.colors.secondaryText
    Accessible.ignored: true
}
