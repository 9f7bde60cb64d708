#include <TavaroVision/Tracking/Private/PatchSamples.h>

#include <TavaroVision/Tracking/Private/TextPatch.h>

#include <algorithm>
#include <cstdlib>
#include <functional>

namespace tavaro {

namespace {

constexpr int stretches = 24, samplesInStretch = 4; // across the patch
constexpr int leastEdge = 24;

int edgeAt(GrayView const& view, int x, int y) {
    auto const* p = view.pixels + y * view.stride + x;
    return std::abs(p[1] - p[-1]) + std::abs(p[view.stride] - p[-view.stride]);
}

}

std::vector<PatchSample> samplesOf(TextPatch const& patch) {
    auto const view = patch.view();
    std::vector<std::vector<PatchSample>> found(stretches);
    for (int y = 1; y + 1 < view.height; ++y) {
        for (int x = 1; x + 1 < view.width; ++x) {
            auto& stretch = found[static_cast<std::size_t>(x * stretches / view.width)];
            PatchSample const sample{x, y, view.pixels[y * view.stride + x], edgeAt(view, x, y)};
            if (stretch.size() == samplesInStretch && sample.edge <= stretch.back().edge) continue;
            if (stretch.size() == samplesInStretch) stretch.pop_back();
            stretch.insert(std::ranges::upper_bound(stretch, sample.edge, std::greater{}, &PatchSample::edge), sample);
        }
    }
    std::vector<PatchSample> samples;
    for (std::size_t rank = 0; rank < samplesInStretch; ++rank) {
        for (auto const& stretch : found) {
            if (rank < stretch.size() && stretch[rank].edge > leastEdge) samples.push_back(stretch[rank]);
        }
    }
    return samples;
}

}
