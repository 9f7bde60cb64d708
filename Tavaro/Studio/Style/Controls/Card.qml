import QtQuick
import Tavaro.Theme

// A surface that things belong together on.
Rectangle {
    radius: Theme.cardRadius
    color: Theme.colors.surface
    border { width: 1; color: Theme.colors.line }
}
