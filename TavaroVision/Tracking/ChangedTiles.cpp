#include <TavaroVision/Tracking/Private/ChangedTiles.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace tavaro {

namespace {

constexpr int quarter = 8;              // pixels to the side
constexpr int leastDifference = 5 * 64; // of the levels of a quarter's pixels, in sum
constexpr int plainLevels = 10;
constexpr double aWhile = 0.3; // seconds

int differenceOf(std::uint8_t const* a, std::uint8_t const* b, int width) {
    int sum = 0;
    for (int x = 0; x < width; ++x) sum += std::abs(a[x] - b[x]);
    return sum;
}

}

ChangedTiles::ChangedTiles(int width, int height)
    : width_(width)
    , height_(height)
    , columns_((width + tileSide - 1) / tileSide)
    , rows_((height + tileSide - 1) / tileSide)
    , reference_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height))
    , changed_(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(rows_))
    , changedAt_(changed_.size())
    , still_(changed_.size()) {}

PixelBox ChangedTiles::box(int column, int row) const {
    int const x = column * tileSide, y = row * tileSide;
    return {x, y, std::min(tileSide, width_ - x), std::min(tileSide, height_ - y)};
}

bool ChangedTiles::differs(GrayView const& picture, PixelBox const& box) const {
    int sums[2][2] = {};
    bool isSame = true;
    for (int y = 0; y < box.height; ++y) {
        auto const* now = picture.pixels + (box.y + y) * picture.stride + box.x;
        auto const* then = reference_.data() + std::ptrdiff_t{box.y + y} * width_ + box.x;
        if (std::memcmp(now, then, static_cast<std::size_t>(box.width)) == 0) continue;
        isSame = false;
        auto* sum = sums[y / quarter];
        sum[0] += differenceOf(now, then, std::min(quarter, box.width));
        if (box.width > quarter) sum[1] += differenceOf(now + quarter, then + quarter, box.width - quarter);
    }
    if (isSame) return false;
    return std::max({sums[0][0], sums[0][1], sums[1][0], sums[1][1]}) >= leastDifference;
}

void ChangedTiles::take(GrayView const& picture, PixelBox const& box) {
    for (int y = box.y; y < box.bottom(); ++y) {
        std::memcpy(reference_.data() + std::ptrdiff_t{y} * width_ + box.x, picture.pixels + y * picture.stride + box.x,
                    static_cast<std::size_t>(box.width));
    }
}

int ChangedTiles::compare(GrayView const& picture, double now) {
    int count = 0;
    for (int row = 0; row < rows_; ++row) {
        for (int column = 0; column < columns_; ++column) {
            auto const tile = box(column, row);
            bool const isChanged = isFirst_ || differs(picture, tile);
            changed_[index(column, row)] = isChanged ? 1 : 0;
            if (!isChanged) continue;
            take(picture, tile);
            auto& changedAt = changedAt_[index(column, row)];
            if (now - changedAt >= aWhile) {
                auto& still = still_[index(column, row)];
                std::shift_right(still.begin(), still.end(), 1);
                still.front() = {changedAt, now};
            }
            changedAt = now;
            ++count;
        }
    }
    isFirst_ = false;
    return count;
}

double ChangedTiles::stillSince(PixelBox const& box, double at) const {
    double since = -1;
    int const left = std::max(0, box.x) / tileSide, right = std::min(width_, box.right());
    int const top = std::max(0, box.y) / tileSide, bottom = std::min(height_, box.bottom());
    for (int row = top; row * tileSide < bottom; ++row) {
        for (int column = left; column * tileSide < right; ++column) {
            auto const& still = still_[index(column, row)];
            auto const holds = [&](Still const& one) { return one.from <= at && at < one.to; };
            auto const then = std::ranges::find_if(still, holds);
            auto const changedAt = changedAt_[index(column, row)];
            if (changedAt > at && then == still.end()) return at;
            since = std::max(since, changedAt <= at ? changedAt : then->from);
        }
    }
    return since < 0 ? at : since;
}

bool ChangedTiles::isChanged(PixelBox const& box) const {
    int const left = std::max(0, box.x) / tileSide, right = std::min(width_, box.right());
    int const top = std::max(0, box.y) / tileSide, bottom = std::min(height_, box.bottom());
    for (int row = top; row * tileSide < bottom; ++row) {
        for (int column = left; column * tileSide < right; ++column) {
            if (isChanged(column, row)) return true;
        }
    }
    return false;
}

bool ChangedTiles::isPlain(int column, int row) const {
    auto const tile = box(column, row);
    int least = 255, most = 0;
    for (int y = tile.y; y < tile.bottom(); ++y) {
        auto const* pixels = reference_.data() + std::ptrdiff_t{y} * width_ + tile.x;
        auto const [low, high] = std::minmax_element(pixels, pixels + tile.width);
        least = std::min<int>(least, *low);
        most = std::max<int>(most, *high);
    }
    return most - least < plainLevels;
}

}
