#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroRender/Kernels/LensGlass.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <TavaroRender/Kernels/Private/FloatVectors-inl.h>

#include <cstring>

#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/Private/LensRow.h>
#include <TavaroRender/Kernels/Private/PixelStore.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

/// A vector of pixels of a row; near the row's end, as many as there are.
HWY_INLINE VecInt loadPixels(std::uint8_t const* row, int x, int count) {
    auto const* at = reinterpret_cast<std::int32_t const*>(row + 4 * static_cast<std::ptrdiff_t>(x));
    if (count >= static_cast<int>(hn::Lanes(TagInt()))) return hn::LoadU(TagInt(), at);
    alignas(64) std::int32_t pixels[64]{};
    std::memcpy(pixels, at, 4 * static_cast<std::size_t>(count));
    return hn::Load(TagInt(), pixels);
}

HWY_INLINE void storePixels(VecInt v, std::uint8_t* row, int x, int count) {
    auto* at = reinterpret_cast<std::int32_t*>(row + 4 * static_cast<std::ptrdiff_t>(x));
    if (count >= static_cast<int>(hn::Lanes(TagInt()))) return hn::StoreU(v, TagInt(), at);
    alignas(64) std::int32_t pixels[64];
    hn::Store(v, TagInt(), pixels);
    std::memcpy(at, pixels, 4 * static_cast<std::size_t>(count));
}

/// The loupe over one row of the canvas. Most pixels need a part of the formula only: shadow outside the lens, vignette
/// and highlight in its middle.
class GlassRow {
public:
    GlassRow(CompositeUniforms const& u, float presence, int y)
        : radius_(u.loupeRadius)
        , presence_(presence)
        , centerX_(u.loupeCenter.x)
        , dy_(pixelCenter(0, y).y - u.loupeCenter.y)
        , shadowDy_(dy_ - u.loupeRadius * 0.07f) {}

    HWY_INLINE void lay(int x, int count, std::uint8_t const* seen, std::uint8_t* canvas) const {
        Tag const tag;
        Place place;
        place.dx = sub(hn::Iota(tag, static_cast<float>(x) + 0.5f), set(centerX_));
        place.dy = set(dy_);
        place.distance = size(place.dx, place.dy);
        place.share = over(place.distance, set(radius_));
        if (hn::AllFalse(tag, isLens(place.share))) {
            auto const shadow = shadowAt(place);
            if (hn::AllFalse(tag, hn::Gt(shadow, hn::Zero(tag)))) return;
            auto const pixels = loadPixels(canvas, x, count);
            storePixels(packed(mixed(colorOf(pixels), 0, shadow), channel<3>(pixels)), canvas, x, count);
            return;
        }
        auto const through = loadPixels(seen, x, count);
        bool const isMiddle =
            hn::AllTrue(tag, hn::And(hn::Lt(place.share, set(0.86f)), hn::Lt(place.distance, set(radius_ - 3))));
        if (isMiddle && presence_ >= 1)
            return storePixels(packed(middle(colorOf(through), place), set(255)), canvas, x, count);
        storePixels(whole(colorOf(through), loadPixels(canvas, x, count), place), canvas, x, count);
    }

private:
    /// Where pixels lie from the lens's middle.
    struct Place {
        Vec dx, dy;
        Vec distance;
        Vec share; // of the radius
    };

    HWY_INLINE Mask isLens(Vec share) const { return hn::Lt(share, set(1.0f + 1.5f / radius_)); }

    HWY_INLINE Vec shadowAt(Place const& place) const {
        auto const ratio = over(size(place.dx, set(shadowDy_)), set(radius_));
        auto const isShadowed =
            hn::And(hn::Gt(place.share, set(1)), hn::And(hn::Gt(ratio, set(0.92f)), hn::Lt(ratio, set(1.35f))));
        auto const strength = mul(mul(sub(set(1), step(0.96f, 1.32f, ratio)), set(0.42f)), set(presence_));
        return hn::IfThenElseZero(isShadowed, strength);
    }

    /// Vignette and highlight: all that there is away from the rim.
    HWY_INLINE Vec3 middle(Vec3 c, Place const& place) const {
        if (!hn::AllFalse(Tag(), hn::Gt(place.share, set(0.55f))))
            c = scaled(c, sub(set(1), mul(step(0.55f, 1, place.share), set(0.10f))));
        auto const nx = over(place.dx, set(radius_));
        auto const ny = over(place.dy, set(radius_));
        auto const fromSpot = size(sub(nx, set(-0.38f)), sub(ny, set(-0.46f)));
        if (hn::AllFalse(Tag(), hn::Lt(fromSpot, set(0.55f)))) return c;
        auto const spot = sub(set(1), step(0, 0.55f, fromSpot));
        return mixed(c, 255, mul(mul(spot, spot), set(0.22f)));
    }

    HWY_INLINE Vec3 glass(Vec3 c, Place const& place, Vec hairline) const {
        c = middle(c, place);
        auto const band = mul(step(0.86f, 0.97f, place.share), sub(set(1), step(0.97f, 1, place.share)));
        // The light comes from (−0.6, −0.8), which is a unit vector.
        auto const facing =
            over(add(mul(place.dx, set(-0.6f)), mul(place.dy, set(-0.8f))), hn::Max(place.distance, set(1e-6f)));
        c = mixed(c, 255, mul(mul(band, clamp01(facing)), set(0.55f)));
        auto const fromRing = mul(hn::Abs(sub(place.share, set(0.995f))), set(radius_));
        c = mixed(c, 255, mul(sub(set(1), step(0.6f, 1.8f, fromRing)), set(0.65f)));
        return mixed(c, 0, mul(hairline, set(0.25f)));
    }

    /// The whole formula.
    HWY_INLINE VecInt whole(Vec3 const& through, VecInt canvas, Place const& place) const {
        auto const hairline = sub(set(1), step(0, 1.4f, hn::Abs(sub(sub(place.distance, set(radius_)), set(1.2f)))));
        auto const lens = glass(through, place, hairline);
        auto const disc = mul(sub(set(1), step(radius_ - 1, radius_ + 1, place.distance)), set(presence_));
        auto const outline = mul(hairline, set(0.25f * presence_));
        auto const cover = hn::IfThenElseZero(isLens(place.share), hn::Max(disc, outline));
        auto const behind = mixed(colorOf(canvas), 0, shadowAt(place));
        // Whole coverage gives the lens's own colour, which pixels that need only that are drawn with.
        auto const laid = [&](Vec under, Vec on)
                              HWY_ATTR { return add(mul(under, sub(set(1), cover)), mul(on, cover)); };
        return packed({laid(behind.x, lens.x), laid(behind.y, lens.y), laid(behind.z, lens.z)},
                      hn::Max(channel<3>(canvas), mul(cover, set(255))));
    }

    float radius_;
    float presence_;
    float centerX_;
    float dy_;
    float shadowDy_;
};

/// Shadow, glass and what is seen through it, over the canvas pixels `begin` … `end` − 1.
void layLensRow(CompositeUniforms const& u, float presence, int y, int begin, int end, std::uint8_t const* seen,
                std::uint8_t* canvas) {
    GlassRow const row(u, presence, y);
    auto const n = static_cast<int>(hn::Lanes(Tag()));
    for (int x = begin; x < end; x += n) row.lay(x, std::min(n, end - x), seen, canvas);
}

}
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace tavaro {

HWY_EXPORT(layLensRow);

void layLens(LensRow const& row, CompositeUniforms const& uniforms, std::uint8_t const* seen, std::uint8_t* canvas) {
    auto const presence = smoothstep(0.0f, 0.45f, uniforms.loupePresence);
    HWY_DYNAMIC_DISPATCH(layLensRow)(uniforms, presence, row.y, row.begin, row.end, seen, canvas);
}

}
#endif
