import QtQuick
import Tavaro.Theme

Rectangle {
    radius: Theme.radius + 2
    color: Theme.colors.raised
    border { width: 1; color: Theme.colors.line }
    Shadow {}
}
