#pragma once

#include <Tavaro/Studio/Timeline/LaneItem.h>

#include <QColor>

#include <array>
#include <string>

namespace tavaro {

/// The colours of one kind of item.
struct ItemColors {
    QColor fill;
    QColor edge;
    QColor text;
    QColor wave; // of sound, and of what is drawn into the box

    bool operator==(ItemColors const&) const = default;
};

/// Every colour that the timeline draws with, and the face of its text.
struct TimelinePalette {
    QColor ground;
    QColor lane;
    QColor head;
    QColor headText;
    QColor headTextFaint;
    QColor ruler;
    QColor rulerText;
    QColor tick;
    QColor line; // between parts
    QColor playhead;
    QColor selection;
    QColor marquee;
    QColor caught; // the line of what a drag catches on
    QColor badge;
    QColor badgeText;
    std::array<ItemColors, 11> items; // by `LaneItemKind`
    std::string face = "Inter";

    ItemColors const& of(LaneItemKind kind) const { return items[static_cast<std::size_t>(kind)]; }

    static TimelinePalette light();
    static TimelinePalette dark();

    bool operator==(TimelinePalette const&) const = default;
};

}
