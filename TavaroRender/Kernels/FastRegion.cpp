#include <TavaroRender/Kernels/Private/FastRegion.h>

#include <TavaroRender/Kernels/Private/BlurRow.h>
#include <TavaroRender/Kernels/Private/PixelStore.h>
#include <TavaroRender/Kernels/Private/RegionRow.h>

#include <cmath>
#include <cstring>
#include <tuple>
#include <utility>
#include <vector>

namespace tavaro {

namespace {

std::size_t bytes(int pixels) { return 4 * static_cast<std::size_t>(pixels); }

/// The first pixel of `size` whose centre a condition holds for, and the one after the last: a range without gaps.
template<class Condition> std::pair<int, int> rangeOf(int size, Condition&& holds) {
    int begin = 0;
    while (begin < size && !holds(pixelCenter(begin, 0).x)) ++begin;
    int end = begin;
    while (end < size && holds(pixelCenter(end, 0).x)) ++end;
    return {begin, end};
}

/// The sums of a blur's columns, four channels each, for the rows of one parity.
class ColumnSums {
public:
    ColumnSums(ImageView source, int left, int count, int reach)
        : source_(source)
        , left_(left)
        , count_(count)
        , reach_(reach)
        , sums_(bytes(count))
        , nothing_(bytes(count)) {}

    void startAt(int y) {
        std::fill(sums_.begin(), sums_.end(), 0);
        BlurPlaces const places(y, reach_, source_.height);
        addEdge(row(0), places.before);
        for (int i = places.first; i <= places.last; i += 2) moveSums(sums_.data(), row(i), nothing_.data(), count_);
        addEdge(row(source_.height - 1), places.after);
    }
    void moveTo(int y) { moveSums(sums_.data(), row(y + reach_), row(y - 2 - reach_), count_); }
    std::int32_t const* data() const { return sums_.data(); }

private:
    void addEdge(std::uint8_t const* row, int times) {
        for (std::size_t i = 0; times > 0 && i < sums_.size(); ++i) sums_[i] += row[i] * times;
    }
    std::uint8_t const* row(int y) const {
        return source_.row(std::clamp(y, 0, source_.height - 1)) + 4 * static_cast<std::ptrdiff_t>(left_);
    }

    ImageView source_;
    int left_;
    int count_;
    int reach_;
    std::vector<std::int32_t> sums_;
    std::vector<std::uint8_t> nothing_;
};

/// Sums of columns that lie past the picture's edges are those of its first and last one.
void widen(std::int32_t const* sums, int first, int count, int wantedFirst, int wantedCount, std::int32_t* out) {
    for (int i = 0; i < wantedCount; ++i) {
        auto const from = std::clamp(wantedFirst + i - first, 0, count - 1);
        std::memcpy(out + 4 * static_cast<std::ptrdiff_t>(i), sums + 4 * static_cast<std::ptrdiff_t>(from),
                    4 * sizeof(std::int32_t));
    }
}

/// The widest blur whose sums fit 32 bits.
constexpr int widestNarrow = 2048;

/// What `meanRow` does, for any reach: the columns' sums, of which `sums` begins with the one of `first`, are read
/// where they are wanted. Writes pixels `left` … `right` − 1 of a picture `width` pixels wide.
void wideMeanRow(std::int32_t const* sums, int first, int width, int reach, std::uint8_t* row, int left, int right) {
    auto const column = [&](int x, std::size_t c) -> std::int64_t {
        return sums[4 * static_cast<std::size_t>(std::clamp(x, 0, width - 1) - first) + c];
    };
    auto const share = 1.0 / (static_cast<double>(reach + 1) * static_cast<double>(reach + 1));
    for (std::size_t c = 0; c < 4; ++c) {
        for (int begin = left; begin < std::min(left + 2, right); ++begin) {
            BlurPlaces const places(begin, reach, width);
            std::int64_t sum = 0;
            if (places.before > 0) sum += places.before * column(0, c);
            for (int i = places.first; i <= places.last; i += 2) sum += column(i, c);
            if (places.after > 0) sum += places.after * column(width - 1, c);
            for (int x = begin; x < right; x += 2) {
                row[bytes(x) + c] = static_cast<std::uint8_t>(std::lround(static_cast<double>(sum) * share));
                if (x + 2 < right) sum += column(x + 2 + reach, c) - column(x - reach, c);
            }
        }
    }
}

}

FastRegion::FastRegion(RegionUniforms const& uniforms, ImageView source, MutableImageView target)
    : uniforms_(uniforms)
    , source_(source)
    , target_(target)
    , isInPlace_(source.pixels == target.pixels) {
    auto const& u = uniforms_;
    std::tie(left_, right_) =
        rangeOf(source.width, [&](float x) { return isWithin(x, u.texSize.x, u.origin.x, u.size.x); });
    std::tie(top_, bottom_) =
        rangeOf(source.height, [&](float y) { return isWithin(y, u.texSize.y, u.origin.y, u.size.y); });
    if (left_ >= right_ || top_ >= bottom_) left_ = right_ = top_ = bottom_ = 0;
    auto const mode = u.mode;
    if (mode == RegionMode::mask && left_ < right_) maskPoints_ = maskPoints(u, source);
    if (mode != RegionMode::blur || !isInPlace_ || left_ >= right_) return;
    auto const reach = blurReach(u);
    aroundLeft_ = std::max(left_ - reach, 0);
    aroundTop_ = std::max(top_ - reach, 0);
    around_ = Image(std::min(right_ + reach, source.width) - aroundLeft_,
                    std::min(bottom_ + reach, source.height) - aroundTop_);
    for (int y = 0; y < around_.height(); ++y)
        std::memcpy(around_.row(y), source.row(aroundTop_ + y) + bytes(aroundLeft_), bytes(around_.width()));
}

std::pair<int, int> FastRegion::rows() const {
    auto const changesOutside = uniforms_.mode == RegionMode::highlight;
    if (isInPlace_ && !changesOutside) return {top_, bottom_ - top_};
    return {0, target_.height};
}

void FastRegion::draw(int begin, int end) const {
    auto const mode = uniforms_.mode;
    for (int y = begin; y < end; ++y) {
        copyRow(y);
        auto* const row = target_.row(y);
        auto const isInside = y >= top_ && y < bottom_;
        if (mode == RegionMode::highlight) {
            tintRow(uniforms_.color, row, 0, isInside ? left_ : target_.width);
            if (isInside) tintRow(uniforms_.color, row, right_, target_.width);
        }
        if (!isInside) continue;
        if (mode == RegionMode::fill) tintRow(uniforms_.color, row, left_, right_);
        if (mode == RegionMode::mask) maskRow(uniforms_, maskPoints_, row, y, left_, right_);
    }
    if (mode == RegionMode::blur) drawBlur(std::max(begin, top_), std::min(end, bottom_));
}

void FastRegion::copyRow(int y) const {
    if (!isInPlace_) std::memcpy(target_.row(y), source_.row(y), bytes(target_.width));
}

void FastRegion::drawBlur(int begin, int end) const {
    if (begin >= end) return;
    auto const reach = blurReach(uniforms_);
    auto const from = isInPlace_ ? around_.view() : source_;
    auto const first = std::max(left_ - reach, 0);
    auto const count = std::min(right_ + reach, source_.width) - first;
    ColumnSums sums[2]{{from, first - aroundLeft_, count, reach}, {from, first - aroundLeft_, count, reach}};
    auto const width = right_ - left_;
    std::vector<std::int32_t> widened(reach <= widestNarrow ? bytes(width + 2 * reach) : 0);
    for (int y = begin; y < end; ++y) {
        auto& parity = sums[(y - begin) % 2];
        if (y - begin < 2)
            parity.startAt(y - aroundTop_);
        else
            parity.moveTo(y - aroundTop_);
        if (reach > widestNarrow) {
            wideMeanRow(parity.data(), first, source_.width, reach, target_.row(y), left_, right_);
            continue;
        }
        widen(parity.data(), first, count, left_ - reach, width + 2 * reach, widened.data());
        meanRow(widened.data(), reach, target_.row(y) + bytes(left_), width);
    }
}

}
