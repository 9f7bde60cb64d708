#include <TavaroVision/Scanning/Private/CoverEdges.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <vector>

namespace tavaro {

namespace {

constexpr int alike = 10; // levels of brightness

/// How far from a mask the places are that it takes its colors from: 3 pixels of a film with 1080 rows.
int outsideOf(GrayView const& picture) { return std::max(3, 3 * picture.height / 1080); }

/// The level of brightness of most of what is just above and below the text.
int groundOf(GrayView const& picture, PixelBox const& text) {
    std::vector<std::uint8_t> levels;
    for (int const y : {text.y - 1, text.bottom()}) {
        if (y < 0 || y >= picture.height) continue;
        auto const* row = picture.pixels + y * picture.stride;
        levels.insert(levels.end(), row + std::max(0, text.x), row + std::min(text.right(), picture.width));
    }
    if (levels.empty()) return 0;
    auto const middle = levels.begin() + static_cast<std::ptrdiff_t>(levels.size() / 2);
    std::ranges::nth_element(levels, middle);
    return *middle;
}

/// How much the four pixels around that corner differ from the ground; outside of the picture they do not.
int strokeAt(GrayView const& picture, int x, int y, int ground) {
    int most = 0;
    for (int row = std::max(0, y - 1); row <= std::min(y, picture.height - 1); ++row) {
        for (int column = std::max(0, x - 1); column <= std::min(x, picture.width - 1); ++column) {
            most = std::max(most, std::abs(picture.pixels[row * picture.stride + column] - ground));
        }
    }
    return most;
}

/// Looks for the edges of one text's cover among all that are near the usual ones.
class EdgeSearch {
public:
    EdgeSearch(GrayView const& picture, PixelBox const& text, int letterHeight)
        : picture_(picture)
        , text_(text)
        , outside_(outsideOf(picture))
        , ground_(groundOf(picture, text))
        , usual_{2 + letterHeight / 3, 2 + letterHeight / 3, 2 + letterHeight / 5, 2 + letterHeight / 5}
        , leastSide_(2 + letterHeight / 6)
        , mostSide_(2 + letterHeight * 2 / 3)
        , best_(usual_) {
        for (int above = usual_.above - 1; above <= usual_.above + letterHeight / 3; ++above) {
            for (int below = usual_.below - 1; below <= usual_.below + letterHeight / 3; ++below) tryRows(above, below);
        }
    }
    CoverEdges const& best() const { return best_; }

private:
    /// What a mask would take from there: just what is there where that is a stroke, and a little of what is beside it,
    /// since the film is not as large as the recording. By steps of `right` and `down` away from the mask.
    int strokes(int x, int y, int right, int down) const {
        auto const at = [&](int distance) {
            return std::max(alike, strokeAt(picture_, x + right * distance, y + down * distance, ground_));
        };
        return 4 * at(outside_) + at(outside_ - 1) + at(outside_ + 1);
    }
    /// A large cover hides what is beside its text.
    static int growth(int edge, int usual) { return edge > usual ? 6 * (edge - usual) : 2 * (usual - edge); }

    void tryRows(int above, int below) {
        int const top = text_.y - above, bottom = text_.bottom() + below, middle = (top + bottom) / 2;
        auto const side = [&](int x, int right) {
            return strokes(x, top, right, -1) + strokes(x, middle, right, 0) + strokes(x, bottom, right, 1);
        };
        left_.clear(), right_.clear(), middles_.clear();
        for (int width = leastSide_; width <= mostSide_; ++width) {
            left_.push_back(side(text_.x - width, -1) + growth(width, usual_.left));
            right_.push_back(side(text_.right() + width, 1) + growth(width, usual_.right));
        }
        int const sides = static_cast<int>(left_.size());
        for (int wider = 1 - sides; wider < sides; ++wider) { // by how much the right side is wider than the left one
            int const x = (text_.x + text_.right() + wider) / 2;
            middles_.push_back(strokes(x, top, 0, -1) + strokes(x, bottom, 0, 1));
        }
        tryColumns(above, below, 12 * (growth(above, usual_.above) + growth(below, usual_.below)));
    }
    void tryColumns(int above, int below, int rows) {
        std::size_t const sides = left_.size();
        for (std::size_t left = 0; left < sides; ++left) {
            for (std::size_t right = 0; right < sides; ++right) {
                int const all = rows + left_[left] + right_[right] + middles_[right + sides - 1 - left];
                if (all >= least_) continue;
                least_ = all;
                best_ = {leastSide_ + static_cast<int>(left), leastSide_ + static_cast<int>(right), above, below};
            }
        }
    }

    GrayView picture_;
    PixelBox text_;
    int outside_, ground_;
    CoverEdges usual_;
    int leastSide_, mostSide_;
    CoverEdges best_;
    int least_ = std::numeric_limits<int>::max();
    std::vector<int> left_, right_, middles_; // what each edge costs with the rows that are tried
};

}

CoverEdges coverEdges(GrayView const& picture, PixelBox const& text, int letterHeight) {
    return EdgeSearch(picture, text, letterHeight).best();
}

}
