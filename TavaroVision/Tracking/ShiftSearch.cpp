#include <TavaroVision/Tracking/Private/ShiftSearch.h>

#include <TavaroVision/Tracking/Private/PatchSamples.h>
#include <TavaroVision/Tracking/Private/TextPatch.h>

#include <algorithm>
#include <cstdint>
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
        edges_ = 0;
        for (auto const& sample : samples_) edges_ += sample.edge;
        best_ = edges_ / 6; // much less than a picture of other letters differs by
        found_.reset();
    }

    bool isWorthwhile() const { return samples_.size() >= fewestSamples; }

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

    /// The same at the side of it, where a third of it on the picture will do: what slides in or out is cut.
    void trialAcross(int dx) {
        int const x = x_ + dx, left = std::max(0, -x), right = std::min(width_, picture_.width - x);
        if (3 * (right - left) < width_ || y_ < 0 || y_ + height_ > picture_.height) return;
        std::size_t looked = 0;
        int difference = 0, edges = 0;
        for (auto const& sample : samples_) {
            if (sample.x < left || sample.x >= right) continue;
            auto const* row = picture_.pixels + (y_ + sample.y) * picture_.stride;
            difference += std::abs(row[x + sample.x] - sample.value);
            if (difference >= best_) return;
            edges += sample.edge;
            ++looked;
        }
        if (looked < fewestSamples) return;
        auto const ofAll = static_cast<int>(std::int64_t{difference} * edges_ / edges);
        if (ofAll >= best_) return;
        best_ = ofAll;
        found_ = {dx, 0};
    }

    std::optional<Shift> found() const { return found_; }

private:
    static constexpr std::size_t fewestSamples = 12;

    std::vector<PatchSample> samples_;
    int width_, height_, x_, y_;
    GrayView picture_;
    int edges_ = 0; // of all samples
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
    // Somewhere above or below there may be something alike that is another text.
    auto const isFound = [&] {
        auto const found = search.found();
        return found && patch.presence(picture, x + found->dx, y + found->dy).isMost();
    };
    if (isFound()) return search.found();
    search.forget();
    for (int dx = 1; dx < picture.width; ++dx) {
        search.trialAcross(dx);
        search.trialAcross(-dx);
    }
    if (isFound()) return search.found();
    search.forget();
    for (int dy = -highestDrag; dy <= highestDrag; ++dy) {
        for (int dx = -widestDrag; dx <= widestDrag; ++dx) search.trial({dx, dy});
    }
    return search.found();
}

}
