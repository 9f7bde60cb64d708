#include <TavaroVision/Scanning/Private/DirtyTiles.h>

#include <TavaroVision/Tracking/Private/ChangedTiles.h>

#include <algorithm>
#include <utility>

namespace tavaro {

namespace {

constexpr double quiet = 0.045;   // seconds without a change: two frames of a slow recording
constexpr double longestWait = 4; // intervals
constexpr std::uint8_t mostFruitless = 4;
constexpr int bandMargin = 48; // pixels: a line is seen whole

}

DirtyTiles::DirtyTiles(ChangedTiles const& tiles, double interval) : changes_(tiles), interval_(interval) {
    auto const count = static_cast<std::size_t>(tiles.columns()) * static_cast<std::size_t>(tiles.rows());
    tiles_.resize(count);
    covered_.resize(count);
}

DirtyTiles::Tile& DirtyTiles::tile(int column, int row) {
    return tiles_[static_cast<std::size_t>(row * changes_.columns() + column)];
}

DirtyTiles::Tile const& DirtyTiles::tile(int column, int row) const {
    return tiles_[static_cast<std::size_t>(row * changes_.columns() + column)];
}

/// Calls `look(index, pixels of the box in the tile)`.
template<class Look> void DirtyTiles::eachIn(PixelBox const& box, Look const& look) const {
    for (int row = std::max(0, box.y) / tileSide; row < changes_.rows() && row * tileSide < box.bottom(); ++row) {
        int const height = std::min(box.bottom(), (row + 1) * tileSide) - std::max(box.y, row * tileSide);
        for (int column = std::max(0, box.x) / tileSide; column < changes_.columns(); ++column) {
            int const width = std::min(box.right(), (column + 1) * tileSide) - std::max(box.x, column * tileSide);
            if (width <= 0) break;
            look(static_cast<std::size_t>(row * changes_.columns() + column), width * height);
        }
    }
}

void DirtyTiles::addFruitless(Tile& tile) {
    if (tile.fruitless < mostFruitless) ++tile.fruitless;
}

void DirtyTiles::add(std::vector<PixelBox> const& wholeTexts, double now) {
    std::ranges::fill(covered_, 0);
    for (auto const& box : wholeTexts) {
        eachIn(box, [&](std::size_t index, int pixels) { covered_[index] += pixels; });
    }
    for (int row = 0; row < changes_.rows(); ++row) {
        for (int column = 0; column < changes_.columns(); ++column) {
            if (!changes_.isChanged(column, row)) continue;
            auto& changed = tile(column, row);
            auto const box = changes_.box(column, row);
            bool const isExplained = 20 * covered_[static_cast<std::size_t>(row * changes_.columns() + column)] >=
                                     17 * box.width * box.height;
            changed.changedAt = now;
            if (isExplained || changes_.isPlain(column, row)) {
                changed.isDirty = false;
            } else if (!changed.isDirty) {
                changed.isDirty = true;
                changed.dirtySince = now;
            }
        }
    }
}

void DirtyTiles::ask(std::vector<PixelBox> const& boxes, double now) {
    for (auto const& box : boxes) {
        eachIn(box, [&](std::size_t index, int) {
            if (!std::exchange(tiles_[index].isDirty, true)) tiles_[index].dirtySince = now;
        });
    }
}

/// Whether much of what stood still for a moment, unread, is about to go.
bool DirtyTiles::isFlash(double next) const {
    std::size_t going = 0;
    for (int row = 0; row < changes_.rows(); ++row) {
        for (int column = 0; column < changes_.columns(); ++column) {
            auto const& one = tile(column, row);
            going += one.isDirty && changes_.isChanged(column, row) && next - one.changedAt >= quiet ? 1 : 0;
        }
    }
    return 25 * going >= tiles_.size();
}

/// Whether so much changes with the next picture as when something plays, scrolls or is dragged.
bool DirtyTiles::isBusy() const {
    std::size_t changed = 0;
    for (int row = 0; row < changes_.rows(); ++row) {
        for (int column = 0; column < changes_.columns(); ++column) changed += changes_.isChanged(column, row) ? 1 : 0;
    }
    return 200 * changed >= tiles_.size();
}

bool DirtyTiles::markDue(double next) {
    bool const takesAll = isFlash(next), isBusy = this->isBusy();
    if (!takesAll && next - readAt_ < interval_ && isBusy) return false;
    bool isAny = false;
    for (auto& one : tiles_) {
        if (!one.isDirty) continue;
        auto const patience = interval_ * std::min<double>(longestWait, 1 << one.fruitless);
        bool const isQuiet = next - one.changedAt >= quiet && next - one.readAt >= interval_;
        // What scrolls is in no place for long.
        bool const isOld = (isBusy || next - one.dirtySince >= patience) && next - one.readAt >= patience;
        one.isDue = isQuiet || isOld || (takesAll && next - one.changedAt >= quiet);
        one.isRestless = one.isDue && !isQuiet;
        isAny |= one.isDue;
    }
    return isAny;
}

bool DirtyTiles::markAll() {
    bool isAny = false;
    for (auto& one : tiles_) isAny |= one.isDue = one.isDirty;
    return isAny;
}

bool DirtyTiles::isDue(PixelBox const& box) const {
    bool isAny = false;
    eachIn(box, [&](std::size_t index, int) { isAny |= tiles_[index].isDue; });
    return isAny;
}

std::vector<PixelBox> DirtyTiles::dueBands() const {
    auto const last = changes_.box(changes_.columns() - 1, changes_.rows() - 1);
    std::vector<PixelBox> bands;
    for (int row = 0; row < changes_.rows(); ++row) {
        auto const begin = tiles_.begin() + std::ptrdiff_t{row} * changes_.columns();
        if (std::none_of(begin, begin + changes_.columns(), [](Tile const& one) { return one.isDue; })) continue;
        auto const box = changes_.box(0, row);
        int const top = std::max(0, box.y - bandMargin), bottom = std::min(last.bottom(), box.bottom() + bandMargin);
        if (!bands.empty() && top <= bands.back().bottom()) {
            bands.back().height = bottom - bands.back().y;
        } else {
            bands.push_back({0, top, last.right(), bottom - top});
        }
    }
    return bands;
}

void DirtyTiles::clearDue(std::vector<PixelBox> const& withWords, double now) {
    std::ranges::fill(covered_, 0);
    for (auto const& box : withWords) {
        eachIn(box, [&](std::size_t index, int pixels) { covered_[index] += pixels; });
    }
    for (std::size_t i = 0; i < tiles_.size(); ++i) {
        auto& one = tiles_[i];
        if (!one.isDue) continue;
        if (!one.isRestless) one.fruitless = 0;
        if (one.isRestless && covered_[i] == 0) addFruitless(one);
        one.isDue = one.isDirty = false;
        one.readAt = now;
    }
    readAt_ = now;
}

std::optional<double> DirtyTiles::unreadSince() const {
    std::optional<double> since;
    for (auto const& one : tiles_) {
        if (one.isDirty) since = std::min(one.dirtySince, since.value_or(one.dirtySince));
    }
    return since;
}

void DirtyTiles::addFleeting(std::vector<PixelBox> const& boxes) {
    for (auto const& box : boxes) {
        eachIn(box, [&](std::size_t index, int) { addFruitless(tiles_[index]); });
    }
}

}
