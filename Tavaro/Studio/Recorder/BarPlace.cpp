#include <Tavaro/Studio/Recorder/BarPlace.h>

#include <algorithm>

namespace tavaro {

namespace {

constexpr int margin = 24; // pixels to the edge of the screen, and to what is filmed

PixelRect at(PixelPoint place, PixelRect const& bar) { return {place.x, place.y, bar.width, bar.height}; }

bool isInside(PixelRect const& inner, PixelRect const& outer) { return inner.intersection(outer) == inner; }

bool isInPicture(PixelRect const& bar, BarRoom const& room) {
    return room.filmed && !bar.intersection(*room.filmed).isEmpty();
}

/// On that screen: at its bottom, at its top, then just below, above and beside what is filmed.
std::vector<PixelPoint> placesOn(PixelRect const& screen, BarRoom const& room) {
    auto const& bar = room.bar;
    int const middle = screen.x + (screen.width - bar.width) / 2;
    std::vector<PixelPoint> places{{middle, screen.y + screen.height - bar.height - margin},
                                   {middle, screen.y + margin}};
    if (!room.filmed) return places;
    auto const& film = *room.filmed;
    int const mostLeft = screen.x + screen.width - bar.width, mostUp = screen.y + screen.height - bar.height;
    int const x = std::clamp(film.x + (film.width - bar.width) / 2, screen.x, std::max(mostLeft, screen.x));
    int const y = std::clamp(film.y + (film.height - bar.height) / 2, screen.y, std::max(mostUp, screen.y));
    for (int const gap : {margin, 0}) {
        places.push_back({x, film.y + film.height + gap});
        places.push_back({x, film.y - bar.height - gap});
        places.push_back({film.x + film.width + gap, y});
        places.push_back({film.x - bar.width - gap, y});
    }
    return places;
}

}

std::optional<PixelPoint> barPlace(BarRoom const& room) {
    auto const isGood = [&](PixelPoint place, PixelRect const& screen) {
        auto const bar = at(place, room.bar);
        return isInside(bar, screen) && !isInPicture(bar, room);
    };
    for (auto const& screen : room.screens)
        if (room.kept && isGood(*room.kept, screen)) return room.kept;
    for (auto const& screen : room.screens)
        for (auto const place : placesOn(screen, room))
            if (isGood(place, screen)) return place;
    return std::nullopt;
}

}
