#include <TavaroVision/Tracking/Private/BusyRegions.h>

#include <TavaroVision/Tracking/Private/ChangedTiles.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <utility>

namespace tavaro {

namespace {

constexpr int fewestTiles = 20;       // of a region
constexpr std::size_t mostBoxes = 4;  // of a frame
constexpr int blockSide = 4;          // tiles
constexpr int nearness = 2;           // blocks between those of a region: the plain parts of a window do not change
constexpr double longestFrame = 0.07; // seconds from one frame of a run to the next

std::int64_t sharedArea(PixelBox const& a, PixelBox const& b) {
    int const width = std::min(a.right(), b.right()) - std::max(a.x, b.x);
    int const height = std::min(a.bottom(), b.bottom()) - std::max(a.y, b.y);
    return width <= 0 || height <= 0 ? 0 : std::int64_t{width} * height;
}

std::int64_t areaOf(PixelBox const& box) { return std::int64_t{box.width} * box.height; }

/// Finds the regions of a frame by blocks of some tiles.
class Regions {
public:
    explicit Regions(ChangedTiles const& tiles)
        : columns_((tiles.columns() + blockSide - 1) / blockSide)
        , rows_((tiles.rows() + blockSide - 1) / blockSide)
        , blocks_(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(rows_)) {
        for (int row = 0; row < tiles.rows(); ++row) {
            for (int column = 0; column < tiles.columns(); ++column) {
                if (tiles.isChanged(column, row))
                    block(column / blockSide, row / blockSide).add(tiles.box(column, row));
            }
        }
    }

    std::vector<PixelBox> all() {
        std::vector<PixelBox> boxes;
        for (int row = 0; row < rows_; ++row) {
            for (int column = 0; column < columns_; ++column) {
                auto const region = regionFrom(column, row);
                if (region.tiles >= fewestTiles) boxes.push_back(region.box);
            }
        }
        std::ranges::sort(boxes, std::greater{}, areaOf);
        if (boxes.size() > mostBoxes) boxes.resize(mostBoxes);
        return boxes;
    }

private:
    struct Block {
        PixelBox box; // around its tiles that changed
        int tiles = 0;

        void add(PixelBox const& other, int count = 1) {
            int const left = tiles > 0 ? std::min(box.x, other.x) : other.x;
            int const top = tiles > 0 ? std::min(box.y, other.y) : other.y;
            box = {left, top, std::max(box.right(), other.right()) - left,
                   std::max(box.bottom(), other.bottom()) - top};
            tiles += count;
        }
    };

    Block& block(int column, int row) { return blocks_[static_cast<std::size_t>(row * columns_ + column)]; }

    /// All that is near to that block, which is taken away.
    Block regionFrom(int column, int row) {
        Block region;
        std::vector<std::pair<int, int>> open{{column, row}};
        while (!open.empty()) {
            auto const [x, y] = open.back();
            open.pop_back();
            auto const taken = std::exchange(block(x, y), {});
            if (taken.tiles == 0) continue;
            region.add(taken.box, taken.tiles);
            for (int near = std::max(0, y - nearness); near <= std::min(rows_ - 1, y + nearness); ++near) {
                for (int beside = std::max(0, x - nearness); beside <= std::min(columns_ - 1, x + nearness); ++beside)
                    open.emplace_back(beside, near);
            }
        }
        return region;
    }

    int columns_;
    int rows_;
    std::vector<Block> blocks_;
};

}

void BusyRegions::add(ChangedTiles const& tiles, double time) {
    auto boxes = Regions(tiles).all();
    if (!boxes.empty()) frames_.push_back({time, std::move(boxes)});
}

template<class Next>
std::vector<BusyRegions::Frame> BusyRegions::run(std::size_t first, PixelBox place, double longest, Next next) const {
    std::vector<Frame> found;
    for (auto i = first; i < frames_.size(); i = next(i)) {
        auto const& frame = frames_[i];
        if (!found.empty() && (std::abs(frame.time - found.back().time) > longestFrame ||
                               std::abs(frame.time - found.front().time) > longest))
            break;
        auto const best =
            std::ranges::max_element(frame.boxes, {}, [&](PixelBox const& box) { return sharedArea(box, place); });
        if (2 * sharedArea(*best, place) < std::min(areaOf(place), areaOf(*best))) break;
        found.push_back({frame.time, {*best}});
        place = *best;
    }
    return found;
}

std::vector<BusyRegions::Frame> BusyRegions::runAfter(double time, PixelBox const& place, double longest) const {
    constexpr double slack = 1e-6;
    auto const from = std::ranges::lower_bound(frames_, time - slack, {}, &Frame::time);
    if (from == frames_.end() || from->time > time + longestFrame) return {};
    auto const first = static_cast<std::size_t>(from - frames_.begin());
    return run(first, place, longest, [](std::size_t i) { return i + 1; });
}

std::vector<BusyRegions::Frame> BusyRegions::runBefore(double time, PixelBox const& place, double longest) const {
    constexpr double slack = 1e-6;
    auto const after = std::ranges::upper_bound(frames_, time + slack, {}, &Frame::time);
    if (after == frames_.begin() || after[-1].time < time - longestFrame) return {};
    auto const first = static_cast<std::size_t>(after - frames_.begin()) - 1;
    return run(first, place, longest, [](std::size_t i) { return i - 1; }); // beyond the first there is no frame
}

}
