#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tavaro {

/// A picture of one bit a pixel. Bits past the width are 0.
class BitRows {
public:
    BitRows(int width, int height)
        : width_(width)
        , height_(height)
        , words_((static_cast<std::size_t>(width) + 63) / 64)
        , bits_(words_ * static_cast<std::size_t>(height)) {}

    int width() const { return width_; }
    int height() const { return height_; }
    std::span<std::uint64_t> row(int y) { return {bits_.data() + words_ * static_cast<std::size_t>(y), words_}; }
    std::span<std::uint64_t const> row(int y) const {
        return {bits_.data() + words_ * static_cast<std::size_t>(y), words_};
    }

    /// How many of a row's bits from `left` to before `right` are set.
    int count(int y, int left, int right) const;
    /// Sets the bits of a row that are at most `reach` to the right of one that is set.
    void smearRight(int y, int reach);
    /// Clears what belongs to columns of at least `length` bits, one below the other.
    void clearColumns(int length);

private:
    int width_;
    int height_;
    std::size_t words_; // a row
    std::vector<std::uint64_t> bits_;
};

/// Where a row's bits are set: from `left` to before `right`.
struct BitRun {
    int left = 0;
    int right = 0;
};
/// From `from` on. Empty (left = right) where there is none any more.
BitRun nextRun(std::span<std::uint64_t const> row, int from);

}
