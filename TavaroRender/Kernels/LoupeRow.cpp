#include <TavaroRender/Kernels/Private/LoupeRow.h>

#include <cmath>

#include <TavaroRender/Kernels/Private/CompositePixel.h>
#include <TavaroRender/Kernels/Private/LensRow.h>
#include <TavaroRender/Kernels/Private/PixelStore.h>

namespace tavaro {

namespace {

using Columns = LoupeRows::Columns;

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

/// The evenly magnified middle's pixels of a row; it is convex, so the rim is what lies on either side.
Columns middleColumns(CompositeUniforms const& u, int y, int width) {
    auto middle = columnsWithin(u, u.loupeRadius * loupeFlatShare + 1, y, width);
    while (middle.begin < middle.end && !isMiddle(u, middle.begin, y)) ++middle.begin;
    while (middle.begin < middle.end && !isMiddle(u, middle.end - 1, y)) --middle.end;
    return middle;
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

void LoupeRows::draw(CompositePixel const& pixel, ContentScratch& scratch, Image& seen, MutableImageView canvas,
                     int yBegin, int yEnd) const {
    auto const& u = pixel.uniforms();
    auto const first = placeWithin(u.loupeCenter.y - loupeReach(u) - 1, canvas.height);
    auto const last = placeWithin(u.loupeCenter.y + loupeReach(u) + 2, canvas.height);
    yBegin = std::max(yBegin, first);
    yEnd = std::min(yEnd, last);
    if (yBegin >= yEnd) return;
    if (seen.width() != canvas.width || seen.height() < yEnd - yBegin) seen = Image(canvas.width, yEnd - yBegin);
    LoupeScene const scene{u, pixel.geometry(), pixel.sampler(), pixel.background()};
    seeRecording(scene, scratch, seen, yBegin, yEnd);
    for (int y = yBegin; y < yEnd; ++y) {
        auto* row = seen.row(y - yBegin);
        seeRest(scene, y, canvas.width, row);
        auto const reach = columnsWithin(u, loupeReach(u), y, canvas.width);
        if (reach.begin < reach.end) layLens({y, reach.begin, reach.end}, u, row, canvas.row(y));
    }
}

/// Of the middle, what the content plan draws.
void LoupeRows::seeRecording(LoupeScene const& scene, ContentScratch& scratch, Image& seen, int yBegin,
                             int yEnd) const {
    if (!middle_.isUsable()) return;
    auto const top = std::max(yBegin, middle_.area().top);
    auto const bottom = std::min(yEnd, middle_.area().bottom);
    for (int tile = 0; tile < middle_.tileCount(); ++tile)
        drawContentTile(middle_, scratch, tile, top, bottom, [&](int y) {
            auto const columns = recordedColumns(scene.uniforms, y, seen.width());
            return ContentSpan{columns.begin, columns.end, seen.row(y - yBegin)};
        });
}

/// The columns of the middle that the content plan draws.
Columns LoupeRows::recordedColumns(CompositeUniforms const& u, int y, int width) const {
    auto const middle = middleColumns(u, y, width);
    auto const& area = middle_.area();
    Columns const recorded{std::max(middle.begin, area.left), std::min(middle.end, area.right)};
    auto const isRecorded = middle_.isUsable() && y >= area.top && y < area.bottom && recorded.begin < recorded.end;
    return isRecorded ? recorded : Columns{middle.end, middle.end};
}

/// The rim, and what of the middle lies past the recording.
void LoupeRows::seeRest(LoupeScene const& scene, int y, int width, std::uint8_t* seen) const {
    auto const& u = scene.uniforms;
    auto const lens = columnsWithin(u, u.loupeRadius + 2, y, width);
    auto middle = middleColumns(u, y, width);
    if (middle.begin >= middle.end) middle = {lens.end, lens.end};
    for (auto const rim : {Columns{lens.begin, middle.begin}, Columns{middle.end, lens.end}})
        if (!seeRim({y, rim.begin, rim.end}, scene, *background_, seen))
            seeByFormula(scene, y, rim.begin, rim.end, seen);
    auto recorded = recordedColumns(u, y, width);
    if (recorded.begin >= recorded.end) recorded = {middle.end, middle.end};
    for (auto const beside : {Columns{middle.begin, recorded.begin}, Columns{recorded.end, middle.end}})
        if (!middle_.isUsable() || !seeBackground({y, beside.begin, beside.end}, scene, *background_, seen))
            seeByFormula(scene, y, beside.begin, beside.end, seen);
}

}
