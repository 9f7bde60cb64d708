#include <TavaroMedia/Frames/PictureChanges.h>

#include <algorithm>
#include <cstddef>

namespace tavaro {

PictureChanges::PictureChanges(int width, int height)
    : width_(width)
    , height_(height)
    , columns_(static_cast<std::size_t>((height + 1) / 2)) {}

void PictureChanges::addAll() { add(Area{0, 0, width_, height_}); }

void PictureChanges::add(Area const& area) {
    Columns const columns{std::max(area.x, 0), std::min(area.x + area.width, width_)};
    int const top = std::max(area.y, 0), bottom = std::min(area.y + area.height, height_);
    if (columns.isEmpty() || top >= bottom) return;
    for (int pair = top / 2; pair <= (bottom - 1) / 2; ++pair) add(pair, columns);
}

void PictureChanges::add(PictureChanges const& other) {
    for (int pair = other.firstPair_; pair < other.endPair_; ++pair)
        if (auto const columns = other.columns(pair); !columns.isEmpty()) add(pair, columns);
}

void PictureChanges::add(int pair, Columns const& columns) {
    auto& known = columns_[static_cast<std::size_t>(pair)];
    known = known.isEmpty() ? columns : Columns{std::min(known.begin, columns.begin), std::max(known.end, columns.end)};
    bool const isFirst = isEmpty();
    firstPair_ = isFirst ? pair : std::min(firstPair_, pair);
    endPair_ = isFirst ? pair + 1 : std::max(endPair_, pair + 1);
}

void PictureChanges::clear() {
    for (int pair = firstPair_; pair < endPair_; ++pair) columns_[static_cast<std::size_t>(pair)] = {};
    firstPair_ = endPair_ = 0;
}

bool PictureChanges::isWhole() const {
    return std::ranges::all_of(columns_,
                               [&](Columns const& columns) { return columns.begin == 0 && columns.end == width_; });
}

}
