#include <TavaroVision/Tracking/Private/ShiftSearch.h>

#include <TavaroVision/Tracking/Private/PatchSamples.h>
#include <TavaroVision/Tracking/Private/TextPatch.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace tavaro {

namespace {

constexpr int widestDrag = 160, highestDrag = 96; // pixels from one picture to the next

class Search {
public:
    Search(TextPatch const& patch, int x, int y, GrayView const& picture)
        : samples_(samplesOf(patch))
        , width_(patch.width())
        , height_(patch.height())
        , x_(x)
        , y_(y)
        , picture_(picture) {
        forget();
    }

    void forget() {
        int edges = 0;
        for (auto const& sample : samples_) edges += sample.edge;
        best_ = edges / 6; // much less than a picture of other letters differs by
        found_.reset();
    }

    bool isWorthwhile() const { return samples_.size() >= 12; }

    /// Keeps it if it is better than all before. Only places wholly on the picture.
    void trial(Shift const& shift) {
        int const x = x_ + shift.dx, y = y_ + shift.dy;
        if (x < 0 || y < 0 || x + width_ > picture_.width || y + height_ > picture_.height) return;
        auto const* corner = picture_.pixels + y * picture_.stride + x;
        int difference = 0;
        for (auto const& sample : samples_) {
            difference += std::abs(corner[sample.y * picture_.stride + sample.x] - sample.value);
            if (difference >= best_) return;
        }
        best_ = difference;
        found_ = shift;
    }

    std::optional<Shift> found() const { return found_; }

private:
    std::vector<PatchSample> samples_;
    int width_, height_, x_, y_;
    GrayView picture_;
    int best_ = 0;
    std::optional<Shift> found_;
};

}

std::optional<Shift> shiftOf(TextPatch const& patch, int x, int y, GrayView const& picture) {
    Search search(patch, x, y, picture);
    if (!search.isWorthwhile()) return std::nullopt;
    for (int dy = 0; dy < picture.height; ++dy) { // near places first: of equals the nearest counts
        search.trial({0, dy});
        search.trial({0, -dy});
    }
    if (auto const found = search.found()) {
        // Somewhere above or below there may be something alike that is another text.
        if (patch.presence(picture, x + found->dx, y + found->dy).isMost()) return found;
        search.forget();
    }
    for (int dy = -highestDrag; dy <= highestDrag; ++dy) {
        for (int dx = -widestDrag; dx <= widestDrag; ++dx) search.trial({dx, dy});
    }
    return search.found();
}

}
