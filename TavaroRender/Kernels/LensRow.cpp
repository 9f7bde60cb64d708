#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroRender/Kernels/LensRow.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <TavaroRender/Kernels/GradientVectors-inl.h>
#include <hwy/contrib/math/math-inl.h>

#include <cmath>
#include <cstring>
#include <utility>

#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/LensRow.h>
#include <TavaroRender/Kernels/PixelStore.h>
#include <TavaroRender/Kernels/Sampling.h>
#include <TavaroRender/Kernels/ScreenLayer.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

struct Corners {
    VecInt topLeft, topRight, bottomLeft, bottomRight;
    Vec fractionX, fractionY;
};

/// The two texels of a row that each `place` (in texels, from `texels` on) names, and those to their right.
HWY_INLINE void readPairs(std::int32_t const* texels, std::int32_t const* place, bool hasRight, VecInt& left,
                          VecInt& right) {
    TagInt const whole;
    auto const n = hn::Lanes(whole);
    // Plain loads: gathers cost several times as much on many machines.
    alignas(64) std::int32_t pairs[32];
    if (hasRight)
        for (std::size_t i = 0; i < n; ++i) std::memcpy(pairs + 2 * i, texels + place[i], 8);
    else
        for (std::size_t i = 0; i < n; ++i) pairs[2 * i] = pairs[2 * i + 1] = texels[place[i]];
    hn::LoadInterleaved2(whole, pairs, left, right);
}

/// The four texels round each point, read from anywhere in the picture.
HWY_INLINE Corners gather(ImageView image, Vec u, Vec v) {
    TagInt const whole;
    auto const position = [](Vec normalised, int extent) HWY_ATTR {
        auto const limit = static_cast<float>(extent);
        return hn::Max(hn::Min(sub(mul(normalised, set(limit)), set(0.5f)), set(limit - 1)), hn::Zero(Tag()));
    };
    // The last texel is reached as the whole of the way from the one before.
    auto const before = [](Vec place, int extent) HWY_ATTR {
        return hn::Min(hn::Floor(place), set(static_cast<float>(std::max(extent - 2, 0))));
    };
    auto const x = position(u, image.width);
    auto const y = position(v, image.height);
    auto const left = before(x, image.width);
    auto const top = before(y, image.height);
    auto const rowWords = image.stride / 4;
    auto const place = hn::Add(hn::Mul(hn::ConvertTo(whole, top), hn::Set(whole, static_cast<std::int32_t>(rowWords))),
                               hn::ConvertTo(whole, left));
    alignas(64) std::int32_t places[16];
    hn::Store(place, whole, places);
    Corners corners;
    auto const* texels = reinterpret_cast<std::int32_t const*>(image.pixels);
    auto const hasRight = image.width > 1;
    readPairs(texels, places, hasRight, corners.topLeft, corners.topRight);
    readPairs(texels + (image.height > 1 ? rowWords : 0), places, hasRight, corners.bottomLeft, corners.bottomRight);
    corners.fractionX = sub(x, left);
    corners.fractionY = sub(y, top);
    return corners;
}

template<int c> HWY_INLINE Vec bilinear(Corners const& t) {
    auto const top = mixed(channel<c>(t.topLeft), channel<c>(t.topRight), t.fractionX);
    auto const bottom = mixed(channel<c>(t.bottomLeft), channel<c>(t.bottomRight), t.fractionX);
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

    HWY_INLINE Vec3 at(Vec x, Vec y) const {
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
            return {bilinear<0>(texels), bilinear<1>(texels), bilinear<2>(texels)};
        }
        if (rows.isGradient()) {
            auto const color = gradientAt(rows, u, v);
            return scaled(color, set(255));
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
    template<int first, int last> HWY_INLINE void sample(Vec qx, Vec qy, Vec magnification, Vec3& sum) const {
        auto const texture = [&](Vec q, Affine const& map, float cropOrigin, float cropSize) HWY_ATTR {
            auto const source = add(mul(q, set(map.scale)), set(map.offset));
            return add(set(cropOrigin), mul(clamp01(source), set(cropSize)));
        };
        auto const tu = texture(qx, mapX, u.cropOrigin.x, u.cropSize.x);
        auto const tv = texture(qy, mapY, u.cropOrigin.y, u.cropSize.y);
        auto const covered = over(set(sampler.coverage()), magnification);
        if (hn::AllTrue(Tag(), hn::Le(covered, set(1)))) {
            addLevel<first, last>(gather(sampler.image(0), tu, tv), set(1), sum);
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
            addLevel<first, last>(gather(sampler.image(l), tu, tv), weight, sum);
        }
    }

    /// The recording inside its pane, the background beside it.
    template<int first, int last> HWY_INLINE void see(Vec qx, Vec qy, Vec magnification, Vec3& sum) const {
        auto const holds = clipHolds(qx, qy);
        if (hn::AllTrue(Tag(), holds)) return sample<first, last>(qx, qy, magnification, sum);
        Vec3 recorded{hn::Zero(Tag()), hn::Zero(Tag()), hn::Zero(Tag())};
        if (!hn::AllFalse(Tag(), holds)) sample<first, last>(qx, qy, magnification, recorded);
        auto const behind = background.at(qx, qy);
        if (first <= 0) sum.x = add(sum.x, hn::IfThenElse(holds, recorded.x, behind.x));
        if (first <= 1 && last >= 1) sum.y = add(sum.y, hn::IfThenElse(holds, recorded.y, behind.y));
        if (last >= 2) sum.z = add(sum.z, hn::IfThenElse(holds, recorded.z, behind.z));
    }

    template<int first, int last> HWY_INLINE static void addLevel(Corners const& texels, Vec weight, Vec3& sum) {
        if (first <= 0 && last >= 0) sum.x = add(sum.x, mul(bilinear<0>(texels), weight));
        if (first <= 1 && last >= 1) sum.y = add(sum.y, mul(bilinear<1>(texels), weight));
        if (first <= 2 && last >= 2) sum.z = add(sum.z, mul(bilinear<2>(texels), weight));
    }

    HWY_INLINE Mask clipHolds(Vec x, Vec y) const {
        if (g.isEmpty) return hn::Lt(x, x);
        auto const inX = hn::Le(hn::Abs(sub(x, set(g.fullCenter.x))), set(g.fullHalf.x));
        return hn::And(inX, hn::Le(hn::Abs(sub(y, set(g.fullCenter.y))), set(g.fullHalf.y)));
    }
};

/// What the lens's rim shows at points relative to its middle. Lanes of the outside are worked out as if they were rim.
HWY_INLINE Vec3 seeRim(RimScene const& scene, Vec dx, Vec dy) {
    auto const& u = scene.u;
    auto const distance = size(dx, dy);
    auto const share = over(distance, set(u.loupeRadius));
    auto const fringe = mul(mul(step(0.86f, 1, share), set(0.006f)), set(u.loupeMag - 1.0f));
    auto const isPlain = hn::AllTrue(Tag(), hn::Eq(fringe, hn::Zero(Tag())));
    auto const hasDirection = hn::Gt(distance, hn::Zero(Tag()));
    auto const directionX = hn::IfThenElseZero(hasDirection, over(dx, distance));
    auto const directionY = hn::IfThenElseZero(hasDirection, over(dy, distance));
    Vec3 sum{hn::Zero(Tag()), hn::Zero(Tag()), hn::Zero(Tag())};
    for (int k = 0; k < 4; ++k) {
        auto const jitter = set((static_cast<float>(k) + 0.5f) / 4 - 0.5f);
        auto const tapX = add(dx, mul(directionX, jitter));
        auto const tapY = add(dy, mul(directionY, jitter));
        auto const bend = step(loupeFlatShare, 1, over(size(tapX, tapY), set(u.loupeRadius)));
        auto const middle = mixed(set(u.loupeMag), set(1), bend);
        auto const see = [&]<int first, int last>(std::integer_sequence<int, first, last>, Vec magnified) HWY_ATTR {
            auto const magnification = hn::Max(magnified, set(0.0001f));
            auto const qx = add(set(u.loupeCenter.x), over(tapX, magnification));
            auto const qy = add(set(u.loupeCenter.y), over(tapY, magnification));
            scene.see<first, last>(qx, qy, magnification, sum);
        };
        if (isPlain) {
            see(std::integer_sequence<int, 0, 2>(), middle);
            continue;
        }
        see(std::integer_sequence<int, 0, 0>(), mul(middle, sub(set(1), fringe)));
        see(std::integer_sequence<int, 1, 1>(), middle);
        see(std::integer_sequence<int, 2, 2>(), mul(middle, add(set(1), fringe)));
    }
    return scaled(sum, set(0.25f));
}

void writeSeen(Vec3 const& color, int x, int count, std::uint8_t* seen) {
    alignas(64) std::int32_t pixels[64];
    hn::StoreU(packed(color, set(255)), TagInt(), pixels);
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

struct Glass {
    float radius;
    float presence;
    float outline; // alpha of the hairline
};

HWY_INLINE Vec3 withGlass(Vec3 c, Glass const& glass, Vec dx, Vec dy, Vec distance, Vec share, Vec hairline) {
    auto const shade = sub(set(1), mul(step(0.55f, 1, share), set(0.10f)));
    c = scaled(c, shade);
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
        Vec3 color = colorOf(pixels);
        color = mixed(color, 0, shadow);
        auto alpha = channel<3>(pixels);
        auto const isLens = hn::Lt(share, set(1.0f + 1.5f / radius));
        if (!hn::AllFalse(tag, isLens)) {
            std::memcpy(seenPixels, seen + 4 * static_cast<std::ptrdiff_t>(x), bytes);
            auto const through = hn::LoadU(whole, seenPixels);
            auto const hairline = sub(set(1), step(0, 1.4f, hn::Abs(sub(sub(distance, set(radius)), set(1.2f)))));
            auto const lens = withGlass(colorOf(through), glass, dx, dy, distance, share, hairline);
            auto const disc = mul(sub(set(1), step(radius - 1, radius + 1, distance)), set(presence));
            auto const cover = hn::IfThenElseZero(isLens, hn::Max(disc, mul(hairline, set(glass.outline))));
            color = {mixed(color.x, lens.x, cover), mixed(color.y, lens.y, cover), mixed(color.z, lens.z, cover)};
            alpha = hn::Max(alpha, mul(cover, set(255)));
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

bool seeRim(LensRow const& row, LoupeScene const& scene, BackgroundRows const& background, std::uint8_t* seen) {
    return HWY_DYNAMIC_DISPATCH(seeRimRow)(scene, background, row.y, row.begin, row.end, seen);
}

bool seeBackground(LensRow const& row, LoupeScene const& scene, BackgroundRows const& background, std::uint8_t* seen) {
    return HWY_DYNAMIC_DISPATCH(seeBackgroundRow)(scene, background, row.y, row.begin, row.end, seen);
}

void layLens(LensRow const& row, CompositeUniforms const& uniforms, std::uint8_t const* seen, std::uint8_t* canvas) {
    auto const presence = smoothstep(0.0f, 0.45f, uniforms.loupePresence);
    HWY_DYNAMIC_DISPATCH(layLensRow)(uniforms, presence, row.y, row.begin, row.end, seen, canvas);
}

}
#endif
