#pragma once

#include <TavaroVision/Reading/ReadText.h>

#include <cstdint>
#include <vector>

namespace tavaro {

/// How much of a patch a picture shows at some place.
struct TextPresence {
    std::vector<std::uint8_t> shown; // of each cell: whether it has ink, and the picture shows it
    int inked = 0;                   // cells with ink
    int count = 0;                   // of those, the ones that are shown
    int whole = 0;                   // of those, letters that are shown from top to bottom
    int longestRun = 0;              // of shown ones in a row, blanks between them left out
    int outerRun = 0;                // the longer one of those at its beginning and its end
    int longestEdge = 0;             // of letters in a row whose upper parts are shown, or whose lower parts
    bool isWhole = false;            // all of it is as it was, the blanks too

    /// Less than three letters in a row can be read by nobody.
    bool isLegible() const { return inked > 0 && longestRun >= (inked < 3 ? inked : 3); }
    /// Three letters in the middle are soon those of another text. What comes, is typed or is covered bit by bit shows
    /// its beginning or its end.
    bool isSurelyPart() const { return isLegible() && (isMost() || longestRun >= sureRun || 2 * outerRun > sureRun); }
    static constexpr int sureRun = 5;
    bool isMost() const { return inked > 0 && 2 * count >= inked; }
};

/// The picture of a piece of text, in cells about a letter wide, to be known again on other pictures: by how alike they
/// are, whatever their contrast, so that text that fades or is selected is still the same. Of a cell that is half
/// covered the other half will do, and a little less where an edge cuts it.
class TextPatch {
public:
    /// The box is within the picture, and not empty.
    TextPatch(GrayView const& picture, PixelBox const& box, int letterHeight);

    int width() const { return width_; }
    int height() const { return height_; }
    int cells() const { return static_cast<int>(isInked_.size()); }
    int cellWidth() const { return cellWidth_; }
    bool isInked(int cell) const { return isInked_[static_cast<std::size_t>(cell)] != 0; }
    int inkedCells() const { return inkedCells_; }
    /// With letters in them: rows of dashes and dots look everywhere the same.
    int letterCells() const { return letterCells_; }
    int letterHeight() const { return letterHeight_; }
    GrayView view() const { return {pixels_.data(), width_, height_, width_}; }

    /// With the patch's corner at that pixel, which may be outside of the picture.
    TextPresence presence(GrayView const& picture, int x, int y) const;

    /// By how much what a picture has there differs from it where it does so most, in hundredths of the difference
    /// between ink and ground. What is outside of the picture does not count.
    int difference(GrayView const& picture, int x, int y) const;
    /// Whether it has the same letters there, each stroke of them: an o is no e. What a codec leaves out does not
    /// matter, other contrasts do.
    bool isSame(GrayView const& picture, int x, int y) const { return difference(picture, x, y) <= mostDifference; }

private:
    static constexpr int mostDifference = 17;

    bool hasLetter(int cell) const;

    int width_;
    int height_;
    int letterHeight_;
    int cellWidth_;
    int inkedCells_ = 0;
    int letterCells_ = 0;
    std::vector<std::uint8_t> pixels_;
    std::vector<std::uint8_t> isInked_;
    std::vector<std::uint8_t> hasLetter_;
};

}
