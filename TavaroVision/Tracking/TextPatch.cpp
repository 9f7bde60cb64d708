#include <TavaroVision/Tracking/Private/TextPatch.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <span>

namespace tavaro {

namespace {

constexpr double leastInk = 5;     // levels that a cell with ink deviates from its mean
constexpr double leastShown = 2.5; // the same of what may be that ink, faded
constexpr double alike = 0.85, alikeHalf = 0.92, alikePart = 0.93, same = 0.93; // correlations

/// Sums over the pixels of two pictures: a is the patch, b what is compared with it.
struct Sums {
    double n = 0, a = 0, b = 0, aa = 0, bb = 0, ab = 0;

    Sums operator+(Sums const& other) const {
        return {n + other.n, a + other.a, b + other.b, aa + other.aa, bb + other.bb, ab + other.ab};
    }
    double spreadA() const { return n > 0 ? std::sqrt(std::max(0.0, aa / n - a / n * (a / n))) : 0; }
    double spreadB() const { return n > 0 ? std::sqrt(std::max(0.0, bb / n - b / n * (b / n))) : 0; }
    double correlation() const {
        auto const spread = spreadA() * spreadB();
        return spread > 0 ? (ab / n - a / n * (b / n)) / spread : 0;
    }
    bool isInk() const { return spreadA() >= leastInk && spreadB() >= leastShown; }
    bool isAlike(double least) const { return isInk() && std::abs(correlation()) >= least; }
};

/// The same for each column of some rows.
class ColumnSums {
public:
    explicit ColumnSums(int width) {
        for (auto& sums : sums_) sums.assign(static_cast<std::size_t>(width), 0);
    }

    void add(std::uint8_t const* a, std::uint8_t const* b, int begin, int end) {
        auto *sa = sums_[0].data(), *sb = sums_[1].data(), *saa = sums_[2].data(), *sbb = sums_[3].data(),
             *sab = sums_[4].data();
        for (int x = begin; x < end; ++x) {
            std::int32_t const p = a[x], q = b[x];
            sa[x] += p;
            sb[x] += q;
            saa[x] += p * p;
            sbb[x] += q * q;
            sab[x] += p * q;
        }
        ++rows_;
    }

    Sums over(int begin, int end) const {
        std::array<std::int64_t, 5> total{};
        for (std::size_t i = 0; i < total.size(); ++i) {
            for (int x = begin; x < end; ++x) total[i] += sums_[i][static_cast<std::size_t>(x)];
        }
        auto const of = [&](std::size_t i) { return static_cast<double>(total[i]); };
        return {static_cast<double>(rows_) * (end - begin), of(0), of(1), of(2), of(3), of(4)};
    }

    /// Whether what is compared has no letters there, but one colour from left to right, as beyond a window's edge.
    bool isFlat(int begin, int end) const {
        auto const [least, most] = std::minmax_element(sums_[1].begin() + begin, sums_[1].begin() + end);
        return rows_ > 0 && *most - *least <= leastInk * rows_;
    }

private:
    std::array<std::vector<std::int32_t>, 5> sums_;
    int rows_ = 0;
};

void tellRun(TextPresence& presence, bool isShown, int& run) {
    ++presence.inked;
    presence.count += isShown ? 1 : 0;
    run = isShown ? run + 1 : 0;
    if (run == presence.inked) presence.outerRun = run;
    presence.longestRun = std::max(presence.longestRun, run);
}

}

TextPatch::TextPatch(GrayView const& picture, PixelBox const& box, int letterHeight)
    : width_(box.width)
    , height_(box.height)
    , letterHeight_(letterHeight)
    , cellWidth_(std::max(6, static_cast<int>(std::lround(0.75 * letterHeight)))) {
    pixels_.reserve(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_));
    for (int y = box.y; y < box.bottom(); ++y) {
        auto const* row = picture.pixels + y * picture.stride + box.x;
        pixels_.insert(pixels_.end(), row, row + width_);
    }
    isInked_.assign(static_cast<std::size_t>((width_ + cellWidth_ - 1) / cellWidth_), 1);
    ColumnSums sums(width_);
    for (int y = 0; y < height_; ++y) sums.add(view().pixels + y * width_, view().pixels + y * width_, 0, width_);
    for (int cell = 0; cell < cells(); ++cell) {
        auto const spread = sums.over(cell * cellWidth_, std::min((cell + 1) * cellWidth_, width_)).spreadA();
        isInked_[static_cast<std::size_t>(cell)] = spread >= leastInk ? 1 : 0;
        inkedCells_ += spread >= leastInk ? 1 : 0;
        hasLetter_.push_back(isInked(cell) && hasLetter(cell) ? 1 : 0);
        letterCells_ += hasLetter_.back();
    }
}

/// Whether its ink is more than a third as high as a capital.
bool TextPatch::hasLetter(int cell) const {
    int const begin = cell * cellWidth_, end = std::min(begin + cellWidth_, width_);
    auto const at = [&](int x, int y) { return int{view().pixels[y * width_ + x]}; };
    int sum = 0, most = 0, rows = 0;
    for (int y = 0; y < height_; ++y)
        for (int x = begin; x < end; ++x) sum += at(x, y);
    int const mean = sum / (height_ * (end - begin));
    for (int y = 0; y < height_; ++y)
        for (int x = begin; x < end; ++x) most = std::max(most, std::abs(at(x, y) - mean));
    for (int y = 0; y < height_; ++y) {
        bool hasInk = false;
        for (int x = begin; x < end; ++x) hasInk |= 2 * std::abs(at(x, y) - mean) >= most;
        rows += hasInk ? 1 : 0;
    }
    return 3 * rows > letterHeight_;
}

int TextPatch::difference(GrayView const& picture, int x, int y) const {
    constexpr int side = 4; // pixels of a block
    auto const [least, most] = std::ranges::minmax(pixels_);
    int const contrast = std::max(most - least, 1), lastRow = std::min(height_, picture.height - y),
              lastColumn = std::min(width_, picture.width - x);
    int greatest = 0;
    for (int top = std::max(0, -y); top < lastRow; top += side) {
        for (int left = std::max(0, -x); left < lastColumn; left += side) {
            int const bottom = std::min(top + side, lastRow), right = std::min(left + side, lastColumn);
            int sum = 0;
            for (int row = top; row < bottom; ++row) {
                auto const *a = view().pixels + row * width_, *b = picture.pixels + (y + row) * picture.stride + x;
                for (int column = left; column < right; ++column) sum += std::abs(a[column] - b[column]);
            }
            greatest = std::max(greatest, 100 * sum / (contrast * (bottom - top) * (right - left)));
        }
    }
    return greatest;
}

TextPresence TextPatch::presence(GrayView const& picture, int x, int y) const {
    TextPresence presence;
    presence.shown.assign(isInked_.size(), 0);
    presence.inked = inkedCells_;
    int const top = std::max(0, -y), bottom = std::min(height_, picture.height - y);
    int const left = std::max(0, -x), right = std::min(width_, picture.width - x);
    if (5 * (bottom - top) < 2 * height_ || right <= left) return presence; // the tops of letters can be read
    int const part = 2 * (bottom - top) / 5, middle = (top + bottom) / 2;
    std::array<ColumnSums, 4> bands{ColumnSums(width_), ColumnSums(width_), ColumnSums(width_), ColumnSums(width_)};
    for (int row = top; row < bottom; ++row) {
        auto const* shown = picture.pixels + (y + row) * picture.stride + x;
        std::size_t const band = row < middle ? (row < top + part ? 0 : 1) : (row < bottom - part ? 2 : 3);
        bands[band].add(pixels_.data() + std::ptrdiff_t{row} * width_, shown, left, right);
    }
    presence.isWhole = top == 0 && bottom == height_ && left == 0 && right == width_;
    presence.inked = 0;
    int run = 0, upperRun = 0, lowerRun = 0;
    for (int cell = 0; cell < cells(); ++cell) {
        int const begin = std::max(cell * cellWidth_, left), end = std::min((cell + 1) * cellWidth_, right);
        if (begin >= end) {
            if (isInked(cell)) tellRun(presence, false, run);
            continue;
        }
        auto const upperPart = bands[0].over(begin, end), lowerPart = bands[3].over(begin, end);
        auto const above = upperPart + bands[1].over(begin, end), below = bands[2].over(begin, end) + lowerPart;
        auto const all = above + below;
        if (!isInked(cell)) {
            if (all.spreadB() >= 2 * leastInk) presence.isWhole = false;
            continue;
        }
        auto const isCut = [&](std::size_t one, std::size_t other) {
            return bands[one].isFlat(begin, end) && bands[other].isFlat(begin, end);
        };
        bool const isAllShown = all.isAlike(alike);
        bool const isUpper = isAllShown || above.isAlike(alikeHalf) || (upperPart.isAlike(alikePart) && isCut(2, 3));
        bool const isLower = isAllShown || below.isAlike(alikeHalf) || (lowerPart.isAlike(alikePart) && isCut(0, 1));
        bool const isShown = isUpper || isLower;
        if (hasLetter_[static_cast<std::size_t>(cell)]) {
            presence.whole += isAllShown ? 1 : 0;
            upperRun = isUpper ? upperRun + 1 : 0;
            lowerRun = isLower ? lowerRun + 1 : 0;
            presence.longestEdge = std::max({presence.longestEdge, upperRun, lowerRun});
        }
        presence.shown[static_cast<std::size_t>(cell)] = isShown ? 1 : 0;
        tellRun(presence, isShown, run);
        auto const contrast = all.spreadB() / std::max(all.spreadA(), 1.0);
        if (all.correlation() < same || contrast < 0.6 || contrast > 1.6) presence.isWhole = false;
    }
    presence.outerRun = std::max(presence.outerRun, run);
    return presence;
}

}
