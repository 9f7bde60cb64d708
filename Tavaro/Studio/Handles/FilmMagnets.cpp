#include <Tavaro/Studio/Handles/FilmMagnets.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr double ofCanvas[] = {0, 1.0 / 3, 0.5, 2.0 / 3, 1};

}

FilmMagnets::FilmMagnets(std::span<FilmThing const> things, std::span<FilmThing const> dragged) {
    auto& [across, down] = lines_;
    across.assign(std::begin(ofCanvas), std::end(ofCanvas));
    down = across;
    for (auto const& thing : things) {
        auto const isSame = [&](FilmThing const& other) { return other.isSame(thing); };
        if (std::ranges::any_of(dragged, isSame)) continue;
        auto const& rect = thing.rect;
        across.insert(across.end(), {rect.x, rect.center().x, rect.maxX()});
        down.insert(down.end(), {rect.y, rect.center().y, rect.maxY()});
    }
    std::ranges::sort(across);
    std::ranges::sort(down);
}

std::optional<MagnetPull> FilmMagnets::pull(FilmGuide::Way way, std::span<double const> edges, double radius) const {
    auto const& lines = lines_[way == FilmGuide::Way::vertical ? 0 : 1];
    std::optional<MagnetPull> best;
    for (double const edge : edges) {
        auto line = std::ranges::lower_bound(lines, edge - radius);
        for (; line != lines.end() && *line <= edge + radius; ++line) {
            if (!best || std::abs(*line - edge) < std::abs(best->by)) best = MagnetPull{*line - edge, {way, *line}};
        }
    }
    return best;
}

}
