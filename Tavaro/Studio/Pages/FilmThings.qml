import QtQuick
import QtQuick.Controls
import Tavaro.Editor
import Tavaro.Theme

// What can be taken hold of on the film, drawn over its picture.
FilmHandles {
    id: handles

    Accessible.role: Accessible.List
    Accessible.name: qsTr("On the film")
    onTextAsked: text.begin()

    // The part of a place that can be seen, as large as a finger needs.
    function reach(place: rect): rect {
        const left = Math.max(place.x, film.x), top = Math.max(place.y, film.y);
        const right = Math.min(place.x + place.width, film.x + film.width);
        const bottom = Math.min(place.y + place.height, film.y + film.height);
        const x = Math.max(film.x, Math.min(left, film.x + film.width - 24));
        const y = Math.max(film.y, Math.min(top, film.y + film.height - 24));
        return Qt.rect(x, y, Math.max(24, right - x), Math.max(24, bottom - y));
    }

    // A line that is seen on every picture: white with a dark rim.
    component Outline: Rectangle {
        property color ink: Theme.colors.accent

        color: "transparent"
        border { width: 1; color: Theme.colors.filmShade }
        Rectangle {
            anchors { fill: parent; margins: 1 }
            radius: Math.max(0, parent.radius - 1)
            color: "transparent"
            border { width: 2; color: parent.ink }
        }
    }

    // A thin line with gaps, around what would be hidden.
    component Dashes: Canvas {
        onPaint: {
            const context = getContext("2d");
            context.clearRect(0, 0, width, height);
            context.lineWidth = 1.5;
            context.strokeStyle = Theme.colors.filmShade;
            context.setLineDash([]);
            context.strokeRect(1, 1, width - 2, height - 2);
            context.strokeStyle = Theme.colors.onFilm;
            context.setLineDash([4, 3]);
            context.strokeRect(1, 1, width - 2, height - 2);
        }
    }

    // What the crop leaves out is dark.
    Repeater {
        readonly property rect kept: handles.tool === "crop" ? handles.things[0]?.place ?? handles.film : handles.film
        readonly property rect all: handles.film

        model: handles.tool === "crop" ? [Qt.rect(all.x, all.y, all.width, kept.y - all.y),
                                          Qt.rect(all.x, kept.y + kept.height, all.width, all.y + all.height - kept.y - kept.height),
                                          Qt.rect(all.x, kept.y, kept.x - all.x, kept.height),
                                          Qt.rect(kept.x + kept.width, kept.y, all.x + all.width - kept.x - kept.width, kept.height)] : []
        Rectangle {
            required property rect modelData

            x: modelData.x; y: modelData.y; width: modelData.width; height: modelData.height
            color: Theme.colors.filmShade
        }
    }
    Outline {
        readonly property rect place: handles.hovered

        x: place.x - 2; y: place.y - 2; width: place.width + 4; height: place.height + 4
        visible: place.width > 0 && place.height > 0
        ink: Theme.colors.onFilm
        opacity: 0.7
    }
    Repeater {
        model: handles.things.length
        Item {
            id: thing

            required property int index
            readonly property var facts: handles.things[index] ?? null
            readonly property rect place: facts?.place ?? Qt.rect(0, 0, 0, 0)
            readonly property rect reached: handles.reach(place)
            readonly property bool visualFocus: activeFocus

            x: reached.x; y: reached.y; width: reached.width; height: reached.height
            activeFocusOnTab: true
            Accessible.role: Accessible.ListItem
            Accessible.name: facts?.name ?? ""
            Accessible.selectable: true
            Accessible.selected: facts?.isSelected ?? false
            Accessible.focusable: true
            Accessible.focused: activeFocus
            Accessible.onPressAction: handles.choose(index)
            Accessible.onIncreaseAction: { handles.choose(index); handles.grow(1.05); handles.rest() }
            Accessible.onDecreaseAction: { handles.choose(index); handles.grow(1 / 1.05); handles.rest() }
            Keys.onSpacePressed: handles.choose(index)
            Keys.onReturnPressed: event => { if (facts?.isSelected) event.accepted = false; else handles.choose(index) }

            Outline {
                x: thing.place.x - thing.x - 2; y: thing.place.y - thing.y - 2
                width: thing.place.width + 4; height: thing.place.height + 4
                visible: (thing.facts?.isSelected ?? false) && !thing.facts.isLine && !thing.facts.isRejected || thing.activeFocus
                radius: thing.facts?.isRound ? width / 2 : 0
                ink: thing.activeFocus && !thing.facts?.isSelected ? Theme.colors.focus : Theme.colors.accent
            }
            Loader {
                x: thing.place.x - thing.x - 1; y: thing.place.y - thing.y - 1
                width: thing.place.width + 2; height: thing.place.height + 2
                active: thing.facts?.isRejected ?? false
                sourceComponent: Dashes {}
            }
        }
    }
    Repeater {
        model: handles.guides.length
        Rectangle {
            required property int index
            readonly property rect place: handles.guides[index] ?? Qt.rect(0, 0, 0, 0)

            x: place.x; y: place.y; width: place.width; height: place.height
            color: Theme.colors.guide
        }
    }
    Repeater {
        model: handles.grips.length
        Rectangle {
            required property int index
            readonly property point place: handles.grips[index] ?? Qt.point(0, 0)

            x: Math.round(place.x - width / 2); y: Math.round(place.y - height / 2)
            width: 11; height: 11
            radius: 3
            color: Theme.colors.onFilm
            border { width: 2; color: Theme.colors.accent }
        }
    }
    Rectangle {
        readonly property rect place: handles.drawn

        x: place.x; y: place.y; width: place.width; height: place.height
        visible: width > 0 && height > 0
        color: Theme.colors.filmShade
        border { width: 2; color: Theme.colors.accent }
    }
    FilmText { id: text; handles: handles }
}
