#include <TavaroRender/Kernels/Private/FastComposite.h>

#include <cstring>

#include <TavaroRender/Kernels/Private/Loupe.h>
#include <TavaroRender/Kernels/Private/PixelStore.h>

namespace tavaro {

namespace {

/// Rows drawn tile by tile before they are finished, while they are still in the cache.
constexpr int rowsPerBlock = 64;

std::size_t bytes(int pixels) { return 4 * static_cast<std::size_t>(pixels); }

}

void FastComposite::draw(CompositeUniforms const& uniforms, ScreenTexture const& screen, ImageView background,
                         MutableImageView canvas, RowBands& rows) {
    CompositePixel const pixel(uniforms, screen, background);
    still_.prepare(pixel, canvas.width, canvas.height, rows);
    if (pixel.showsScreen()) content_.prepare(uniforms, pixel.sampler(), still_.contentArea());
    if (loupeIsVisible(uniforms)) loupe_.prepare(pixel, canvas.width, canvas.height);
    rows.run(canvas.height, [&](int begin, int end) { drawRows(pixel, canvas, begin, end); });
}

void FastComposite::drawRows(CompositePixel const& pixel, MutableImageView canvas, int begin, int end) {
    auto scratch = takeScratch();
    auto const hasLoupe = loupeIsVisible(pixel.uniforms());
    for (int top = begin; top < end; top += rowsPerBlock) {
        auto const bottom = std::min(top + rowsPerBlock, end);
        if (!still_.contentArea().isEmpty()) drawContent(pixel, scratch->content, canvas, top, bottom);
        for (int y = top; y < bottom; ++y) finishRow(canvas, y);
        if (hasLoupe) loupe_.draw(pixel, scratch->content, scratch->seen, canvas, top, bottom);
    }
    giveBack(std::move(scratch));
}

void FastComposite::drawContent(CompositePixel const& pixel, ContentScratch& scratch, MutableImageView canvas,
                                int begin, int end) {
    if (!content_.isUsable()) {
        for (int y = begin; y < end; ++y)
            for (int x = still_.row(y).contentBegin; x < still_.row(y).contentEnd; ++x)
                storePixel(canvas.row(y) + 4 * x,
                           withAlpha(contentColor(pixel.uniforms(), pixel.sampler(), pixelCenter(x, y)), 1));
        return;
    }
    for (int tile = 0; tile < content_.tileCount(); ++tile)
        drawContentTile(content_, scratch, tile, begin, end, [&](int y) {
            return ContentSpan{still_.row(y).contentBegin, still_.row(y).contentEnd, canvas.row(y)};
        });
}

void FastComposite::finishRow(MutableImageView canvas, int y) const {
    auto const& row = still_.row(y);
    auto const* still = still_.pixels().row(y);
    auto* out = canvas.row(y);
    std::memcpy(out, still, bytes(row.contentBegin));
    std::memcpy(out + bytes(row.contentEnd), still + bytes(row.contentEnd), bytes(canvas.width - row.contentEnd));
    for (auto const& mixed : row.mixed) {
        auto* p = out + bytes(mixed.x);
        auto const* behind = still + bytes(mixed.x);
        auto const channel = [&](int c, float added) {
            auto const value =
                static_cast<float>(p[c]) * mixed.content + static_cast<float>(behind[c]) * mixed.behind + added;
            p[c] = static_cast<std::uint8_t>(std::clamp(value, 0.0f, 255.0f) + 0.5f);
        };
        channel(0, mixed.added.x);
        channel(1, mixed.added.y);
        channel(2, mixed.added.z);
        p[3] = std::max(behind[3], mixed.alpha);
    }
}

std::unique_ptr<FastComposite::Scratch> FastComposite::takeScratch() {
    std::lock_guard const lock(mutex_);
    if (scratches_.empty()) return std::make_unique<Scratch>();
    auto scratch = std::move(scratches_.back());
    scratches_.pop_back();
    return scratch;
}

void FastComposite::giveBack(std::unique_ptr<Scratch> scratch) {
    std::lock_guard const lock(mutex_);
    scratches_.push_back(std::move(scratch));
}

}
