#include <TavaroRender/Renderer/Private/CanvasHistory.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace tavaro {

namespace {

constexpr double worthKeeping = 0.5; // of the canvas; to keep more costs nearly as much as to draw it anew

/// NaN and what lies beyond the ends count as the nearest end.
int inside(double v, int limit) { return v > 0 ? static_cast<int>(std::min(v, static_cast<double>(limit))) : 0; }

}

void CanvasHistory::clear() { count_ = 0; }

CanvasHistory::Patch& CanvasHistory::add(CanvasStage stage) {
    if (count_ == patches_.size()) patches_.emplace_back();
    auto& patch = patches_[count_++];
    patch.stage = stage;
    patch.isLost = false;
    return patch;
}

void CanvasHistory::lose(CanvasStage stage) { add(stage).isLost = true; }

void CanvasHistory::keep(CanvasStage stage, CanvasBounds const& rect, ImageView canvas) {
    auto& patch = add(stage);
    patch.left = inside(std::floor(rect.left), canvas.width);
    patch.top = inside(std::floor(rect.top), canvas.height);
    patch.width = std::max(inside(std::ceil(rect.right), canvas.width) - patch.left, 0);
    patch.height = std::max(inside(std::ceil(rect.bottom), canvas.height) - patch.top, 0);
    patch.isLost = static_cast<double>(patch.width) * patch.height >
                   worthKeeping * static_cast<double>(canvas.width) * canvas.height;
    if (patch.isLost) return;
    if (patch.width == 0) patch.height = 0; // beside the canvas: there are no rows of nothing
    auto const rowBytes = 4 * static_cast<std::size_t>(patch.width);
    patch.pixels.resize(std::max(patch.pixels.size(), rowBytes * static_cast<std::size_t>(patch.height)));
    auto* kept = patch.pixels.data();
    for (int y = 0; y < patch.height; ++y, kept += rowBytes) {
        std::memcpy(kept, canvas.row(patch.top + y) + 4 * std::ptrdiff_t{patch.left}, rowBytes);
    }
}

bool CanvasHistory::returnTo(CanvasStage stage, MutableImageView canvas) {
    auto first = count_;
    while (first > 0 && patches_[first - 1].stage >= stage) {
        if (patches_[--first].isLost) return false;
    }
    while (count_ > first) {
        auto const& patch = patches_[--count_];
        auto const rowBytes = 4 * static_cast<std::size_t>(patch.width);
        auto const* kept = patch.pixels.data();
        for (int y = 0; y < patch.height; ++y, kept += rowBytes) {
            std::memcpy(canvas.row(patch.top + y) + 4 * std::ptrdiff_t{patch.left}, kept, rowBytes);
        }
    }
    return true;
}

}
