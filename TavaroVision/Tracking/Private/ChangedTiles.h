#pragma once

#include <TavaroVision/Reading/ReadText.h>

#include <array>
#include <cstdint>
#include <vector>

namespace tavaro {

inline constexpr int tileSide = 16;

/// What of a screen changes, by squares of 16 pixels. Each is compared with how it looked when it last changed, so that
/// slow fades add up, and by its worst quarter, so that a full stop counts and what codecs leave of their work does
/// not.
class ChangedTiles {
public:
    ChangedTiles(int width, int height);

    int columns() const { return columns_; }
    int rows() const { return rows_; }
    PixelBox box(int column, int row) const;

    /// Takes a picture of that size for the present one, at that time. All of the first one is a change. Returns how
    /// many changed.
    int compare(GrayView const& picture, double now);
    /// Since when the box has looked as it did at that time, in the last second; `at` where that is not known.
    double stillSince(PixelBox const& box, double at) const;
    bool isChanged(int column, int row) const { return changed_[index(column, row)] != 0; }
    /// Whether anything of the box changed; what of it is outside of the picture does not count.
    bool isChanged(PixelBox const& box) const;
    /// Whether it has one level of brightness at present, and so no text.
    bool isPlain(int column, int row) const;

private:
    /// When a tile looked the same for a while.
    struct Still {
        double from = 0;
        double to = 0; // it changed then
    };

    std::size_t index(int column, int row) const { return static_cast<std::size_t>(row * columns_ + column); }
    bool differs(GrayView const& picture, PixelBox const& box) const;
    void take(GrayView const& picture, PixelBox const& box);

    int width_;
    int height_;
    int columns_;
    int rows_;
    bool isFirst_ = true;
    std::vector<std::uint8_t> reference_;
    std::vector<std::uint8_t> changed_;
    std::vector<double> changedAt_;
    std::vector<std::array<Still, 4>> still_; // the latest first
};

}
