#include <TavaroRender/Kernels/LoupeRow.h>

#include <cmath>

#include <TavaroRender/Kernels/CompositePixel.h>
#include <TavaroRender/Kernels/LensRow.h>
#include <TavaroRender/Kernels/PixelStore.h>

namespace tavaro {

namespace {

struct Columns {
    int begin = 0;
    int end = 0;
};

/// Pixels of a row up to `reach` from the lens's middle, and perhaps one more on each side.
Columns columnsWithin(CompositeUniforms const& u, float reach, int y, int width) {
    auto const dy = pixelCenter(0, y).y - u.loupeCenter.y;
    if (!(std::abs(dy) <= reach)) return {};
    auto const half = std::sqrt(reach * reach - dy * dy);
    return {placeWithin(u.loupeCenter.x - half - 1, width), placeWithin(u.loupeCenter.x + half + 2, width)};
}

void seeByFormula(LoupeScene const& scene, int y, int begin, int end, std::uint8_t* seen) {
    for (int x = begin; x < end; ++x) {
        auto const offset = pixelCenter(x, y) - scene.uniforms.loupeCenter;
        storePixel(seen + 4 * x, withAlpha(seenThroughLens(scene, offset), 1));
    }
}

bool isMiddle(CompositeUniforms const& u, int x, int y) {
    return !(length(pixelCenter(x, y) - u.loupeCenter) / u.loupeRadius > loupeFlatShare);
}

/// The pixels of one axis that lie in the middle's square and show a point of the recording's pane.
Columns paneColumns(float lensCenter, float radius, float magnification, float paneCenter, float paneHalf, int limit) {
    auto const reach = radius * loupeFlatShare + 1;
    auto begin = placeWithin(lensCenter - reach, limit);
    auto end = placeWithin(lensCenter + reach + 1, limit);
    auto const shows = [&](int i) {
        auto const q = lensCenter + (static_cast<float>(i) + 0.5f - lensCenter) / magnification;
        return std::abs(q - paneCenter) <= paneHalf;
    };
    while (begin < end && !shows(begin)) ++begin;
    while (begin < end && !shows(end - 1)) --end;
    return {begin, end};
}

}

void LoupeRows::prepare(CompositePixel const& pixel, int width, int height) {
    auto const& u = pixel.uniforms();
    auto const& g = pixel.geometry();
    CanvasArea area;
    auto const magnification = std::max(u.loupeMag, 0.0001f);
    if (pixel.showsScreen()) {
        auto const across =
            paneColumns(u.loupeCenter.x, u.loupeRadius, magnification, g.fullCenter.x, g.fullHalf.x, width);
        auto const down =
            paneColumns(u.loupeCenter.y, u.loupeRadius, magnification, g.fullCenter.y, g.fullHalf.y, height);
        area = {across.begin, down.begin, across.end, down.end};
    }
    if (area.isEmpty()) area = {};
    background_.emplace(u, pixel.background(), 0);
    middle_.prepareLens(u, pixel.sampler(), area, u.loupeCenter, magnification);
}

void LoupeRows::draw(CompositePixel const& pixel, ContentScratch& scratch, std::vector<std::uint8_t>& seen,
                     MutableImageView canvas, int y) const {
    auto const& u = pixel.uniforms();
    auto const reach = columnsWithin(u, loupeReach(u), y, canvas.width);
    if (reach.begin >= reach.end) return;
    LoupeScene const scene{u, pixel.geometry(), pixel.sampler(), pixel.background()};
    seen.resize(4 * static_cast<std::size_t>(canvas.width));
    auto const lens = columnsWithin(u, u.loupeRadius + 2, y, canvas.width);
    // The middle is convex; the rim is what lies on either side of it.
    auto middle = columnsWithin(u, u.loupeRadius * loupeFlatShare + 1, y, canvas.width);
    while (middle.begin < middle.end && !isMiddle(u, middle.begin, y)) ++middle.begin;
    while (middle.begin < middle.end && !isMiddle(u, middle.end - 1, y)) --middle.end;
    if (middle.begin >= middle.end) middle = {lens.end, lens.end};
    for (auto const rim : {Columns{lens.begin, middle.begin}, Columns{middle.end, lens.end}})
        if (!seeRim({y, rim.begin, rim.end}, scene, *background_, seen.data()))
            seeByFormula(scene, y, rim.begin, rim.end, seen.data());
    seeMiddle(scene, scratch, y, middle.begin, middle.end, seen.data());
    layLens({y, reach.begin, reach.end}, u, seen.data(), canvas.row(y));
}

void LoupeRows::seeMiddle(LoupeScene const& scene, ContentScratch& scratch, int y, int begin, int end,
                          std::uint8_t* seen) const {
    if (!middle_.isUsable()) return seeByFormula(scene, y, begin, end, seen);
    auto const area = middle_.area();
    Columns recorded{std::max(begin, area.left), std::min(end, area.right)};
    if (y < area.top || y >= area.bottom || recorded.begin >= recorded.end) recorded = {end, end};
    for (auto const beside : {Columns{begin, recorded.begin}, Columns{recorded.end, end}})
        if (!seeBackground({y, beside.begin, beside.end}, scene, *background_, seen))
            seeByFormula(scene, y, beside.begin, beside.end, seen);
    if (recorded.begin >= recorded.end) return;
    for (int tile = 0; tile < middle_.tileCount(); ++tile) {
        auto const left = middle_.tileBegin(tile);
        drawContentTile(middle_, scratch, tile, y, std::max(recorded.begin, left),
                        std::min(recorded.end, left + ContentPlan::tileWidth), seen);
    }
}

}
