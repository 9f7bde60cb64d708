#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroRender/Kernels/LoupeRow.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <TavaroRender/Kernels/GradientVectors-inl.h>
#include <hwy/contrib/math/math-inl.h>

#include <cmath>
#include <cstring>

#include <TavaroRender/Kernels/CompositePixel.h>
#include <TavaroRender/Kernels/LoupeRow.h>
#include <TavaroRender/Kernels/PixelStore.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Tag = hn::ScalableTag<float>;
using TagInt = hn::RebindToSigned<Tag>;
using Vec = hn::Vec<Tag>;
using VecInt = hn::Vec<TagInt>;
using Mask = hn::Mask<Tag>;

// Comparisons decide between shapes, so everything up to them rounds exactly as the scalar formulas do.

HWY_INLINE Vec set(float v) { return hn::Set(Tag(), v); }
HWY_INLINE Vec add(Vec a, Vec b) { return hn::Add(a, b); }
HWY_INLINE Vec sub(Vec a, Vec b) { return hn::Sub(a, b); }
HWY_INLINE Vec mul(Vec a, Vec b) { return hn::Mul(a, b); }
HWY_INLINE Vec over(Vec a, Vec b) { return hn::Div(a, b); }
HWY_INLINE Vec clamp01(Vec v) { return hn::Min(hn::Max(v, hn::Zero(Tag())), set(1)); }
HWY_INLINE Vec mixed(Vec a, Vec b, Vec t) { return add(a, mul(sub(b, a), t)); }
HWY_INLINE Vec size(Vec x, Vec y) { return hn::Sqrt(add(mul(x, x), mul(y, y))); }
HWY_INLINE Vec step(float edge0, float edge1, Vec v) {
    auto const t = clamp01(over(sub(v, set(edge0)), set(edge1 - edge0)));
    return mul(mul(t, t), sub(set(3), mul(set(2), t)));
}

struct Color {
    Vec r, g, b;
};

HWY_INLINE Color mixed(Color const& a, float to, Vec t) {
    return {mixed(a.r, set(to), t), mixed(a.g, set(to), t), mixed(a.b, set(to), t)};
}

HWY_INLINE Vec channel(VecInt pixels, int c) {
    auto const shifted = hn::ShiftRightSame(hn::BitCast(hn::RebindToUnsigned<Tag>(), pixels), 8 * c);
    return hn::ConvertTo(Tag(), hn::And(hn::BitCast(TagInt(), shifted), hn::Set(TagInt(), 255)));
}

HWY_INLINE VecInt packed(Color const& c, VecInt alpha) {
    auto const byteOf = [](Vec v) HWY_ATTR {
        return hn::ConvertTo(TagInt(), add(hn::Min(hn::Max(v, hn::Zero(Tag())), set(255)), set(0.5f)));
    };
    return hn::Or(hn::Or(byteOf(c.r), hn::ShiftLeft<8>(byteOf(c.g))),
                  hn::Or(hn::ShiftLeft<16>(byteOf(c.b)), hn::ShiftLeft<24>(alpha)));
}

// --- the rim: the recording through a bending lens

struct Corners {
    VecInt topLeft, topRight, bottomLeft, bottomRight;
    Vec fractionX, fractionY;
};

/// The four texels round each point, read from anywhere in the picture.
HWY_INLINE Corners gather(ImageView image, Vec u, Vec v) {
    TagInt const whole;
    auto const place = [](Vec normalised, int extent) HWY_ATTR {
        auto const limit = set(static_cast<float>(extent));
        return hn::Max(hn::Min(sub(mul(normalised, limit), set(0.5f)), limit), set(-1));
    };
    auto const clamped = [&](VecInt i, int extent)
                             HWY_ATTR { return hn::Min(hn::Max(i, hn::Zero(whole)), hn::Set(whole, extent - 1)); };
    auto const x = place(u, image.width);
    auto const y = place(v, image.height);
    auto const floorX = hn::Floor(x);
    auto const floorY = hn::Floor(y);
    auto const left = hn::ConvertTo(whole, floorX);
    auto const top = hn::ConvertTo(whole, floorY);
    auto const x0 = clamped(left, image.width);
    auto const x1 = clamped(hn::Add(left, hn::Set(whole, 1)), image.width);
    auto const rowWords = hn::Set(whole, static_cast<std::int32_t>(image.stride / 4));
    auto const row0 = hn::Mul(clamped(top, image.height), rowWords);
    auto const row1 = hn::Mul(clamped(hn::Add(top, hn::Set(whole, 1)), image.height), rowWords);
    auto const* texels = reinterpret_cast<std::int32_t const*>(image.pixels);
    return {hn::GatherIndex(whole, texels, hn::Add(row0, x0)),
            hn::GatherIndex(whole, texels, hn::Add(row0, x1)),
            hn::GatherIndex(whole, texels, hn::Add(row1, x0)),
            hn::GatherIndex(whole, texels, hn::Add(row1, x1)),
            sub(x, floorX),
            sub(y, floorY)};
}

HWY_INLINE Vec bilinear(Corners const& t, int c) {
    auto const top = mixed(channel(t.topLeft, c), channel(t.topRight, c), t.fractionX);
    auto const bottom = mixed(channel(t.bottomLeft, c), channel(t.bottomRight, c), t.fractionX);
    return mixed(top, bottom, t.fractionY);
}

/// The background seen through the lens: no pixel grid, no dither.
struct LensBackground {
    BackgroundRows const& rows;
    bool isImage;

    explicit LensBackground(BackgroundRows const& rows)
        : rows(rows)
        , isImage(backgroundIsImage(rows.uniforms(), rows.image())) {}

    /// False for gradients of colours out of range and pictures of odd layout, which the pixel formula draws.
    bool isUsable() const {
        if (isImage) return rows.image().stride % 4 == 0;
        return rows.isGradient() || rows.mode() < BackgroundMode::linear || rows.mode() > BackgroundMode::aurora;
    }

    HWY_INLINE Color at(Vec x, Vec y) const {
        auto const& uniforms = rows.uniforms();
        auto const u = over(x, set(uniforms.canvasSize.x));
        auto const v = over(y, set(uniforms.canvasSize.y));
        if (isImage) {
            // Aspect fill is a line on each axis: two of its points give it.
            auto const image = rows.image();
            auto const origin = aspectFillUV({0, 0}, image.width, image.height, uniforms.canvasSize);
            auto const corner = aspectFillUV({1, 1}, image.width, image.height, uniforms.canvasSize);
            auto const texels =
                gather(image, mixed(set(origin.x), set(corner.x), u), mixed(set(origin.y), set(corner.y), v));
            return {bilinear(texels, 0), bilinear(texels, 1), bilinear(texels, 2)};
        }
        if (rows.isGradient()) {
            auto const color = gradient::gradientAt(rows, u, v);
            return {mul(color.x, set(255)), mul(color.y, set(255)), mul(color.z, set(255))};
        }
        auto const color = backgroundColor(uniforms, {});
        return {set(color.x * 255), set(color.y * 255), set(color.z * 255)};
    }
};

struct Affine {
    float scale = 1;
    float offset = 0;
};

/// What all points of a vector need to know of the frame.
struct RimScene {
    CompositeUniforms const& u;
    ScreenGeometry const& g;
    ScreenSampler const& sampler;
    LensBackground background;
    Affine mapX, mapY; // canvas to crop

    RimScene(LoupeScene const& scene, BackgroundRows const& rows)
        : u(scene.uniforms)
        , g(scene.geometry)
        , sampler(scene.sampler)
        , background(rows)
        , mapX(affine(u.contentOrigin.x, u.contentSize.x, u.zoomCenter.x))
        , mapY(affine(u.contentOrigin.y, u.contentSize.y, u.zoomCenter.y)) {}

    Affine affine(float origin, float extent, float center) const {
        auto const scale = 1.0 / (static_cast<double>(extent) * std::max(u.zoomScale, 0.0001f));
        auto const offset = center - 0.5 / std::max(u.zoomScale, 0.0001f) - origin * scale;
        return {static_cast<float>(scale), static_cast<float>(offset)};
    }

    /// Recorded colour at canvas points seen `magnification` times larger; of the channels, only `first`…`last`.
    HWY_INLINE void sample(Vec qx, Vec qy, Vec magnification, int first, int last, Color& sum) const {
        auto const texture = [&](Vec q, Affine const& map, float cropOrigin, float cropSize) HWY_ATTR {
            auto const source = add(mul(q, set(map.scale)), set(map.offset));
            return add(set(cropOrigin), mul(clamp01(source), set(cropSize)));
        };
        auto const tu = texture(qx, mapX, u.cropOrigin.x, u.cropSize.x);
        auto const tv = texture(qy, mapY, u.cropOrigin.y, u.cropSize.y);
        auto const covered = over(set(sampler.coverage()), magnification);
        if (hn::AllTrue(Tag(), hn::Le(covered, set(1)))) {
            addLevel(gather(sampler.image(0), tu, tv), set(1), first, last, sum);
            return;
        }
        // Two neighbouring levels share each sample; lanes may need different ones.
        auto const highest = set(static_cast<float>(sampler.levelCount() - 1));
        auto const level = hn::Min(hn::Log2(Tag(), hn::Max(covered, set(1))), highest);
        auto const from = static_cast<int>(hn::GetLane(hn::MinOfLanes(Tag(), level)));
        auto const to = static_cast<int>(std::ceil(hn::GetLane(hn::MaxOfLanes(Tag(), level))));
        for (int l = from; l <= to; ++l) {
            auto const distance = hn::Abs(sub(level, set(static_cast<float>(l))));
            auto const weight = hn::Max(sub(set(1), distance), hn::Zero(Tag()));
            if (sampler.image(l).isEmpty() || hn::AllFalse(Tag(), hn::Gt(weight, hn::Zero(Tag())))) continue;
            addLevel(gather(sampler.image(l), tu, tv), weight, first, last, sum);
        }
    }

    /// The recording inside its pane, the background beside it.
    HWY_INLINE void see(Vec qx, Vec qy, Vec magnification, int first, int last, Color& sum) const {
        auto const holds = clipHolds(qx, qy);
        if (hn::AllTrue(Tag(), holds)) return sample(qx, qy, magnification, first, last, sum);
        Color recorded{hn::Zero(Tag()), hn::Zero(Tag()), hn::Zero(Tag())};
        if (!hn::AllFalse(Tag(), holds)) sample(qx, qy, magnification, first, last, recorded);
        auto const behind = background.at(qx, qy);
        if (first <= 0) sum.r = add(sum.r, hn::IfThenElse(holds, recorded.r, behind.r));
        if (first <= 1 && last >= 1) sum.g = add(sum.g, hn::IfThenElse(holds, recorded.g, behind.g));
        if (last >= 2) sum.b = add(sum.b, hn::IfThenElse(holds, recorded.b, behind.b));
    }

    HWY_INLINE static void addLevel(Corners const& texels, Vec weight, int first, int last, Color& sum) {
        if (first <= 0 && last >= 0) sum.r = add(sum.r, mul(bilinear(texels, 0), weight));
        if (first <= 1 && last >= 1) sum.g = add(sum.g, mul(bilinear(texels, 1), weight));
        if (first <= 2 && last >= 2) sum.b = add(sum.b, mul(bilinear(texels, 2), weight));
    }

    HWY_INLINE Mask clipHolds(Vec x, Vec y) const {
        if (g.isEmpty) return hn::Lt(x, x);
        auto const inX = hn::Le(hn::Abs(sub(x, set(g.fullCenter.x))), set(g.fullHalf.x));
        return hn::And(inX, hn::Le(hn::Abs(sub(y, set(g.fullCenter.y))), set(g.fullHalf.y)));
    }
};

/// What the lens's rim shows at points relative to its middle. Lanes of the outside are worked out as if they were rim.
HWY_INLINE Color seeRim(RimScene const& scene, Vec dx, Vec dy) {
    auto const& u = scene.u;
    auto const distance = size(dx, dy);
    auto const share = over(distance, set(u.loupeRadius));
    auto const fringe = mul(mul(step(0.86f, 1, share), set(0.006f)), set(u.loupeMag - 1.0f));
    auto const isPlain = hn::AllTrue(Tag(), hn::Eq(fringe, hn::Zero(Tag())));
    auto const hasDirection = hn::Gt(distance, hn::Zero(Tag()));
    auto const directionX = hn::IfThenElseZero(hasDirection, over(dx, distance));
    auto const directionY = hn::IfThenElseZero(hasDirection, over(dy, distance));
    Color sum{hn::Zero(Tag()), hn::Zero(Tag()), hn::Zero(Tag())};
    for (int k = 0; k < 4; ++k) {
        auto const jitter = set((static_cast<float>(k) + 0.5f) / 4 - 0.5f);
        auto const tapX = add(dx, mul(directionX, jitter));
        auto const tapY = add(dy, mul(directionY, jitter));
        auto const bend = step(loupeFlatShare, 1, over(size(tapX, tapY), set(u.loupeRadius)));
        auto const middle = mixed(set(u.loupeMag), set(1), bend);
        for (int c = isPlain ? 1 : 0; c < (isPlain ? 2 : 3); ++c) {
            auto const bent = add(set(1), mul(set(static_cast<float>(c) - 1.0f), fringe));
            auto const magnification = hn::Max(mul(middle, bent), set(0.0001f));
            auto const qx = add(set(u.loupeCenter.x), over(tapX, magnification));
            auto const qy = add(set(u.loupeCenter.y), over(tapY, magnification));
            scene.see(qx, qy, magnification, isPlain ? 0 : c, isPlain ? 2 : c, sum);
        }
    }
    return {mul(sum.r, set(0.25f)), mul(sum.g, set(0.25f)), mul(sum.b, set(0.25f))};
}

void writeSeen(Color const& color, int x, int count, std::uint8_t* seen) {
    alignas(64) std::int32_t pixels[64];
    hn::StoreU(packed(color, hn::Set(TagInt(), 255)), TagInt(), pixels);
    std::memcpy(seen + 4 * static_cast<std::ptrdiff_t>(x), pixels, 4 * static_cast<std::size_t>(count));
}

/// Calls `see(px)` for the pixel centres of a row, a vector at a time; lanes past the end repeat the last pixel.
template<class See> HWY_INLINE void forSeen(int begin, int end, std::uint8_t* seen, See&& see) {
    auto const n = static_cast<int>(hn::Lanes(Tag()));
    for (int x = begin; x < end; x += n) {
        auto const px = hn::Min(hn::Iota(Tag(), static_cast<float>(x) + 0.5f), set(static_cast<float>(end) - 0.5f));
        writeSeen(see(px), x, std::min(n, end - x), seen);
    }
}

/// The rim's pixels `begin` … `end` − 1; false where the vectors cannot draw them.
bool seeRimRow(LoupeScene const& scene, BackgroundRows const& rows, int y, int begin, int end, std::uint8_t* seen) {
    RimScene const rim(scene, rows);
    auto const canGather = scene.geometry.isEmpty || scene.sampler.image(0).stride % 4 == 0;
    if (!canGather || !rim.background.isUsable()) return false;
    auto const dy = set(pixelCenter(0, y).y - scene.uniforms.loupeCenter.y);
    forSeen(begin, end, seen,
            [&](Vec px) HWY_ATTR { return seeRim(rim, sub(px, set(scene.uniforms.loupeCenter.x)), dy); });
    return true;
}

/// The same for pixels of the lens's middle that show the background.
bool seeBackgroundRow(LoupeScene const& scene, BackgroundRows const& rows, int y, int begin, int end,
                      std::uint8_t* seen) {
    LensBackground const background(rows);
    if (!background.isUsable()) return false;
    auto const& u = scene.uniforms;
    auto const magnification = set(std::max(u.loupeMag, 0.0001f));
    auto const qy = add(set(u.loupeCenter.y), over(set(pixelCenter(0, y).y - u.loupeCenter.y), magnification));
    forSeen(begin, end, seen, [&](Vec px) HWY_ATTR {
        return background.at(add(set(u.loupeCenter.x), over(sub(px, set(u.loupeCenter.x)), magnification)), qy);
    });
    return true;
}

// --- the glass

struct Glass {
    float radius;
    float presence;
    float outline; // alpha of the hairline
};

HWY_INLINE Color withGlass(Color c, Glass const& glass, Vec dx, Vec dy, Vec distance, Vec share, Vec hairline) {
    auto const shade = sub(set(1), mul(step(0.55f, 1, share), set(0.10f)));
    c = {mul(c.r, shade), mul(c.g, shade), mul(c.b, shade)};
    auto const nx = over(dx, set(glass.radius));
    auto const ny = over(dy, set(glass.radius));
    auto const spot = sub(set(1), step(0, 0.55f, size(sub(nx, set(-0.38f)), sub(ny, set(-0.46f)))));
    c = mixed(c, 255, mul(mul(spot, spot), set(0.22f)));
    auto const band = mul(step(0.86f, 0.97f, share), sub(set(1), step(0.97f, 1, share)));
    // The light comes from (−0.6, −0.8), which is a unit vector.
    auto const facing = over(add(mul(dx, set(-0.6f)), mul(dy, set(-0.8f))), hn::Max(distance, set(1e-6f)));
    c = mixed(c, 255, mul(mul(band, clamp01(facing)), set(0.55f)));
    auto const fromRing = mul(hn::Abs(sub(share, set(0.995f))), set(glass.radius));
    c = mixed(c, 255, mul(sub(set(1), step(0.6f, 1.8f, fromRing)), set(0.65f)));
    return mixed(c, 0, mul(hairline, set(0.25f)));
}

/// Shadow, glass and what is seen through it, over the canvas pixels `begin` … `end` − 1.
void layLensRow(CompositeUniforms const& u, float presence, int y, int begin, int end, std::uint8_t const* seen,
                std::uint8_t* canvas) {
    Tag const tag;
    TagInt const whole;
    auto const n = static_cast<int>(hn::Lanes(tag));
    auto const radius = u.loupeRadius;
    Glass const glass{radius, presence, 0.25f * presence};
    auto const dy = set(pixelCenter(0, y).y - u.loupeCenter.y);
    auto const shadowDy = sub(dy, set(radius * 0.07f));
    for (int x = begin; x < end; x += n) {
        auto const bytes = 4 * static_cast<std::size_t>(std::min(n, end - x));
        alignas(64) std::int32_t canvasPixels[64]{}, seenPixels[64]{};
        auto* at = canvas + 4 * static_cast<std::ptrdiff_t>(x);
        std::memcpy(canvasPixels, at, bytes);
        auto const pixels = hn::LoadU(whole, canvasPixels);
        auto const dx = sub(hn::Iota(tag, static_cast<float>(x) + 0.5f), set(u.loupeCenter.x));
        auto const distance = size(dx, dy);
        auto const share = over(distance, set(radius));
        auto const ratio = over(size(dx, shadowDy), set(radius));
        auto const isShadowed =
            hn::And(hn::Gt(share, set(1)), hn::And(hn::Gt(ratio, set(0.92f)), hn::Lt(ratio, set(1.35f))));
        auto const shadow =
            hn::IfThenElseZero(isShadowed, mul(mul(sub(set(1), step(0.96f, 1.32f, ratio)), set(0.42f)), set(presence)));
        Color color{channel(pixels, 0), channel(pixels, 1), channel(pixels, 2)};
        color = mixed(color, 0, shadow);
        auto alpha = hn::And(hn::BitCast(whole, hn::ShiftRight<24>(hn::BitCast(hn::RebindToUnsigned<Tag>(), pixels))),
                             hn::Set(whole, 255));
        auto const isLens = hn::Lt(share, set(1.0f + 1.5f / radius));
        if (!hn::AllFalse(tag, isLens)) {
            std::memcpy(seenPixels, seen + 4 * static_cast<std::ptrdiff_t>(x), bytes);
            auto const through = hn::LoadU(whole, seenPixels);
            auto const hairline = sub(set(1), step(0, 1.4f, hn::Abs(sub(sub(distance, set(radius)), set(1.2f)))));
            auto const lens = withGlass({channel(through, 0), channel(through, 1), channel(through, 2)}, glass, dx, dy,
                                        distance, share, hairline);
            auto const disc = mul(sub(set(1), step(radius - 1, radius + 1, distance)), set(presence));
            auto const cover = hn::IfThenElseZero(isLens, hn::Max(disc, mul(hairline, set(glass.outline))));
            color = {mixed(color.r, lens.r, cover), mixed(color.g, lens.g, cover), mixed(color.b, lens.b, cover)};
            alpha = hn::Max(alpha, hn::ConvertTo(whole, add(mul(cover, set(255)), set(0.5f))));
        }
        hn::StoreU(packed(color, alpha), whole, canvasPixels);
        std::memcpy(at, canvasPixels, bytes);
    }
}

}
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace tavaro {

HWY_EXPORT(seeRimRow);
HWY_EXPORT(seeBackgroundRow);
HWY_EXPORT(layLensRow);

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
        if (!HWY_DYNAMIC_DISPATCH(seeRimRow)(scene, *background_, y, rim.begin, rim.end, seen.data()))
            seeByFormula(scene, y, rim.begin, rim.end, seen.data());
    seeMiddle(scene, scratch, y, middle.begin, middle.end, seen.data());
    HWY_DYNAMIC_DISPATCH(layLensRow)
    (u, smoothstep(0.0f, 0.45f, u.loupePresence), y, reach.begin, reach.end, seen.data(), canvas.row(y));
}

void LoupeRows::seeMiddle(LoupeScene const& scene, ContentScratch& scratch, int y, int begin, int end,
                          std::uint8_t* seen) const {
    if (!middle_.isUsable()) return seeByFormula(scene, y, begin, end, seen);
    auto const area = middle_.area();
    Columns recorded{std::max(begin, area.left), std::min(end, area.right)};
    if (y < area.top || y >= area.bottom || recorded.begin >= recorded.end) recorded = {end, end};
    for (auto const beside : {Columns{begin, recorded.begin}, Columns{recorded.end, end}})
        if (!HWY_DYNAMIC_DISPATCH(seeBackgroundRow)(scene, *background_, y, beside.begin, beside.end, seen))
            seeByFormula(scene, y, beside.begin, beside.end, seen);
    if (recorded.begin >= recorded.end) return;
    for (int tile = 0; tile < middle_.tileCount(); ++tile) {
        auto const left = middle_.tileBegin(tile);
        drawContentTile(middle_, scratch, tile, y, std::max(recorded.begin, left),
                        std::min(recorded.end, left + ContentPlan::tileWidth), seen);
    }
}

}
#endif
