#pragma once

#include <Tavaro/Studio/Timeline/DrawnLooks.h>
#include <Tavaro/Studio/Timeline/FilmStills.h>
#include <Tavaro/Studio/Timeline/SoundWaves.h>
#include <Tavaro/Studio/Timeline/TimelineHit.h>
#include <Tavaro/Studio/Timeline/TimelinePalette.h>

#include <TavaroCore/Values/TimeRange.h>

#include <QColor>
#include <QImage>
#include <QRectF>

#include <array>
#include <optional>
#include <set>
#include <vector>

namespace tavaro {

/// What a node of the scene draws, in the order of a layer: plain rectangles, then pictures.
struct DrawnRect {
    QRectF place;
    QColor color;

    bool operator==(DrawnRect const&) const = default;
};
struct TimelinePicture {
    QRectF place;
    QImage picture;
    QRectF source; // pixels of the picture

    bool operator==(TimelinePicture const& other) const {
        return place == other.place && source == other.source && picture.cacheKey() == other.picture.cacheKey();
    }
};
struct TimelineLayer {
    std::vector<DrawnRect> rects;
    std::vector<TimelinePicture> pictures;
};

/// Everything that is in view, lowest layer first. A value; what has not changed compares equal.
struct TimelineDrawing {
    enum Layer { ground, items, marks, labels, front, ruler, top, heads, corner, layerCount };

    std::array<TimelineLayer, layerCount> layers;
};

/// What a drawing is made of. Borrows all of it.
struct TimelineSubject {
    TimelineScene scene;
    std::set<UUID> const& selection;
    TimelinePalette const& palette;
    double framesPerSecond = 60;
    std::optional<UUID> hovered = {};
    std::optional<LaneBox> marquee = {};
    std::optional<double> caught = {};
    std::optional<double> gap = {};
    TimeRange range = {};        // that commands work on and that plays over and over; none without a length
    SoundWaves* waves = nullptr; // none: sounds are boxes
    FilmStills* stills = nullptr;
};

/// Draws what is in view; costs by that, whatever the length of the film.
TimelineDrawing drawTimeline(TimelineSubject const& subject, DrawnLooks& looks);

}
