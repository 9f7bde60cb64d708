#include <TavaroRender/Renderer/PointerPatch.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>

#include <TavaroRender/Renderer/FrameUniforms.h>

namespace tavaro {

namespace {

constexpr int clickSpotlight = 4;
constexpr int pointerSpotlight = 6;

/// Pixels that a pass may touch around its position, on the safe side; none when it may touch all.
std::optional<float> reach(CursorUniforms const& pass) {
    float furthest = 0;
    if (pass.clickOpacity > 0 && pass.clickRadius > 0) {
        if (pass.clickEffect == clickSpotlight) return std::nullopt;
        furthest = pass.clickRadius * 1.6f + 3; // the widest glow ends at 1.45 radii
    }
    if (pass.opacity > 0 && pass.cursorSize > 0) {
        if (pass.style == pointerSpotlight) return std::nullopt;
        furthest = std::max(furthest, pass.cursorSize * 1.1f + 3 + std::hypot(pass.velocity.x, pass.velocity.y));
    }
    return std::isfinite(furthest) ? std::optional{furthest} : std::nullopt;
}

int toInt(float v, int limit) { return static_cast<int>(std::clamp(v, 0.0f, static_cast<float>(limit))); }

}

void PointerPatch::take(FrameUniforms const& frame, ImageView canvas) {
    isTaken_ = false;
    columns_ = {canvas.width, 0};
    rows_ = {canvas.height, 0};
    for (int i = 0; i < frame.cursorPasses; ++i) {
        auto const& pass = frame.cursor[i];
        auto const around = reach(pass);
        if (!around) return;
        columns_.begin = std::min(columns_.begin, toInt(pass.position.x - *around, canvas.width));
        columns_.end = std::max(columns_.end, toInt(pass.position.x + *around + 1, canvas.width));
        rows_.begin = std::min(rows_.begin, toInt(pass.position.y - *around, canvas.height));
        rows_.end = std::max(rows_.end, toInt(pass.position.y + *around + 1, canvas.height));
    }
    if (columns_.begin >= columns_.end || rows_.begin >= rows_.end) columns_ = rows_ = {}; // all of it off the canvas
    auto const rowBytes = 4 * static_cast<std::size_t>(columns_.end - columns_.begin);
    pixels_.resize(std::max(pixels_.size(), rowBytes * static_cast<std::size_t>(rows_.end - rows_.begin)));
    auto* kept = pixels_.data();
    for (int y = rows_.begin; y < rows_.end; ++y, kept += rowBytes) {
        std::memcpy(kept, canvas.row(y) + 4 * columns_.begin, rowBytes);
    }
    isTaken_ = true;
}

bool PointerPatch::restore(MutableImageView canvas) const {
    if (!isTaken_) return false;
    auto const rowBytes = 4 * static_cast<std::size_t>(columns_.end - columns_.begin);
    auto const* kept = pixels_.data();
    for (int y = rows_.begin; y < rows_.end; ++y, kept += rowBytes) {
        std::memcpy(canvas.row(y) + 4 * columns_.begin, kept, rowBytes);
    }
    return true;
}

}
