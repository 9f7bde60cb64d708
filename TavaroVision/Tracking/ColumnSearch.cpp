#include <TavaroVision/Tracking/Private/ColumnSearch.h>

#include <TavaroVision/Tracking/Private/TextPatch.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace tavaro {

namespace {

constexpr int mostParts = 4, lettersInPart = 4;
constexpr std::size_t fewestSamples = 8;
constexpr int firstLook = 4; // samples that differ much already say that it is not here

}

ColumnSearch::ColumnSearch(TextPatch const& patch) : height_(patch.height()) {
    int const count = std::clamp(patch.cells() / lettersInPart, 1, mostParts);
    auto const samples = samplesOf(patch);
    auto const add = [&](PixelBox const& box) {
        Part part{.left = box.x, .right = box.right()};
        std::ranges::copy_if(samples, std::back_inserter(part.samples), [&](PatchSample const& sample) {
            return sample.x >= box.x && sample.x < box.right() && sample.y >= box.y && sample.y < box.bottom();
        });
        if (part.samples.size() < fewestSamples) return;
        for (auto const& sample : part.samples) part.mostDifference += sample.edge;
        part.mostDifference /= 9; // less than a picture of other letters, or of none, differs by
        parts_.push_back(std::move(part));
    };
    for (int n = 0; n < count; ++n) {
        int const left = n * patch.width() / count, right = (n + 1) * patch.width() / count;
        add({left, 0, right - left, height_});
    }
    int const half = height_ / 2;
    add({0, 0, patch.width(), half});
    add({0, height_ - half, patch.width(), half});
}

bool ColumnSearch::Part::isAt(std::uint8_t const* corner, std::ptrdiff_t stride) const {
    int difference = 0, looked = 0;
    int const mostAtFirst = 3 * firstLook * mostDifference / static_cast<int>(samples.size());
    for (auto const& sample : samples) {
        difference += std::abs(corner[sample.y * stride + sample.x] - sample.value);
        if (difference > (++looked <= firstLook ? mostAtFirst : mostDifference)) return false;
    }
    return true;
}

void ColumnSearch::find(GrayView const& picture, int x, std::span<char const> isNew,
                        std::function<void(int y)> const& look) const {
    for (int y = 0; y + height_ <= picture.height; ++y) {
        if (!isNew[static_cast<std::size_t>(y)]) continue;
        auto const* corner = picture.pixels + y * picture.stride + x;
        bool const isThere = std::ranges::any_of(parts_, [&](Part const& part) {
            return x + part.left >= 0 && x + part.right <= picture.width && part.isAt(corner, picture.stride);
        });
        if (isThere) look(y);
    }
}

}
