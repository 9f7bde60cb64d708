#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace tavaro {

/// Whether lines are rows, for what moves up and down, or columns.
enum class LineDirection { rows, columns };

/// BGRX pixels of a part of the screen, without gaps.
struct ScreenPixels {
    std::span<std::uint32_t const> pixels;
    int width = 0;
    int height = 0;
};

/// A picture as the lines of a few bands across them: what of each line is in a band comes to one number, 0 where it is
/// of one color. Bands keep apart what scrolls from what stands beside it.
class PictureLines {
public:
    PictureLines() = default;
    PictureLines(ScreenPixels const& picture, LineDirection direction);

    /// By how many lines what is in `before` moved to become this, toward its start (`sign` 1) or its end (−1). Lines
    /// that stayed as they were do not count. Nothing where too little moved, or not as a whole.
    std::optional<int> movedSince(PictureLines const& before, int sign) const;

    /// 0…1: of what is not plain within two bands of that place across the lines, what is no longer as it was.
    double changedShare(PictureLines const& before, int across) const;

    /// Whether near that place there is enough that would be seen to move if it did: a few words.
    bool hasContentAt(int across, int line) const;

    bool operator==(PictureLines const&) const = default;

private:
    struct Cell {
        std::uint64_t hash = 0;
        int line = 0;
    };
    std::vector<Cell> uniqueCells(int band) const;
    bool isAsBefore(PictureLines const& before, std::size_t cell) const;
    /// The bands within two of that place, from the first to behind the last.
    std::pair<int, int> bandsAt(int across) const;

    int across_ = 0; // pixels of a line
    int bands_ = 0;
    int lines_ = 0;
    std::vector<std::uint64_t> cells_; // bands_ × lines_
};

}
