#pragma once

#include <Tavaro/Studio/Handles/FilmGrip.h>

#include <array>
#include <optional>
#include <span>
#include <vector>

namespace tavaro {

/// A line across the picture that a drag is caught by.
struct FilmGuide {
    enum class Way { vertical, horizontal };

    Way way = Way::vertical;
    double at = 0; // share of the canvas, from its left or top

    bool operator==(FilmGuide const&) const = default;
};

/// How far an edge is from the line that catches it.
struct MagnetPull {
    double by = 0;
    FilmGuide guide;
};

/// What a drag on the picture is caught by: the canvas's edges, middle and thirds, and the edges and middles of the
/// things that stay where they are.
class FilmMagnets {
public:
    FilmMagnets() = default;
    FilmMagnets(std::span<FilmThing const> things, std::span<FilmThing const> dragged);

    /// The least pull of any of the edges; none where all are further away than `radius`.
    std::optional<MagnetPull> pull(FilmGuide::Way way, std::span<double const> edges, double radius) const;

private:
    std::array<std::vector<double>, 2> lines_; // by way, ascending
};

}
