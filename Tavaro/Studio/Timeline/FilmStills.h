#pragma once

#include <Tavaro/Studio/Timeline/TileStore.h>

#include <QImage>

#include <compare>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace tavaro {

/// A small picture of a film's moment. In the order of the moments of one film, so that those wanted together are
/// decoded as they follow each other.
struct FilmStill {
    std::string asset;
    int height = 0;          // pixels
    std::int64_t moment = 0; // in sixteenths of a second

    static constexpr double momentsPerSecond = 16;
    double seconds() const { return static_cast<double>(moment) / momentsPerSecond; }
    /// The moment at or before a time on a grid of 2^n moments that is as wide as `apart` seconds at most, so that
    /// zooming asks for few new ones.
    static std::int64_t momentFor(double seconds, double apart);

    auto operator<=>(FilmStill const&) const = default;
};

/// Stills along the clips. One decoder a film, two open at most, on a thread beside the main one.
class FilmStills {
public:
    using Place = std::function<std::filesystem::path(std::string const& asset)>;

    /// `onReady` is called on another thread when there is something new to paint.
    FilmStills(Place place, std::function<void()> onReady);

    /// The still, or, until it is there, the nearest earlier one of that film; empty where there is none.
    QImage picture(FilmStill const& still);
    void paintEnds() { tiles_.paintEnds(); }

private:
    TileStore<FilmStill> tiles_;
};

}
