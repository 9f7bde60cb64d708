#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroRender/Kernels/CameraRow.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <TavaroRender/Kernels/Private/CanvasVectors-inl.h>
#include <TavaroRender/Kernels/Private/PictureRow-inl.h>
#include <TavaroRender/Kernels/Private/TexelVectors-inl.h>

#include <TavaroRender/Kernels/Private/CameraRow.h>
#include <TavaroRender/Kernels/Private/PixelStore.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

/// The distance to a box of rounded corners whose middle is the origin.
HWY_INLINE Vec boxDistance(Vec x, Vec y, Float2 halfSize, float radius) {
    auto const zero = hn::Zero(Tag());
    auto const qx = add(sub(hn::Abs(x), set(halfSize.x)), set(radius));
    auto const qy = add(sub(hn::Abs(y), set(halfSize.y)), set(radius));
    auto const outside = size(hn::Max(qx, zero), hn::Max(qy, zero));
    return sub(add(outside, hn::Min(hn::Max(qx, qy), zero)), set(radius));
}

/// The shadow at `dx`, `dy` from the box's centre, 0…1.
HWY_INLINE Vec shadowStrength(CameraPlan const& plan, Vec dx, float dy) {
    auto const& u = plan.uniforms();
    auto const& box = plan.mapping();
    auto const distance = boxDistance(dx, set(dy - u.halfSize.y * 0.06f), box.halfSize, box.radius);
    auto const shade = sub(set(1), smooth(-u.halfSize.x * 0.1f, u.halfSize.x * 0.45f, distance));
    return mul(mul(shade, shade), set(u.shadowOpacity * u.opacity));
}

HWY_INLINE float offsetOf(CameraPlan const& plan, int y) { return pixelCenter(0, y).y - plan.uniforms().center.y; }

void strengths(CameraPlan const& plan, int y, std::uint16_t* out) {
    TagInt const whole;
    hn::Rebind<std::uint16_t, TagInt> const words;
    auto const n = static_cast<int>(hn::Lanes(whole));
    auto const begin = plan.columns().begin;
    for (int x = begin; x < plan.columns().end; x += n) {
        auto const strength = shadowStrength(plan, centersFrom(x, plan.uniforms().center.x), offsetOf(plan, y));
        auto const rounded = hn::ConvertTo(whole, add(mul(clamp01(strength), set(65535)), set(0.5f)));
        alignas(64) std::uint16_t memory[32];
        hn::StoreU(hn::DemoteTo(words, rounded), words, memory);
        std::memcpy(out + (x - begin), memory, 2 * static_cast<std::size_t>(std::min(n, plan.columns().end - x)));
    }
}

/// Darkens what only the shadow reaches. `strength` can be read past the end, by a vector's width.
HWY_INLINE void drawShadow(std::uint16_t const* strength, std::uint8_t* row, int begin, int end) {
    TagInt const whole;
    hn::Rebind<std::uint16_t, TagInt> const words;
    auto const alphaBits = hn::Set(whole, static_cast<std::int32_t>(0xFF000000));
    forPackedPixels(row, begin, end, [&](VecInt pixels, int x) HWY_ATTR {
        auto const dark = hn::PromoteTo(whole, hn::LoadU(words, strength + (x - begin)));
        auto const opaque = hn::ShiftRight<8>(hn::Add(hn::Sub(dark, hn::ShiftRight<8>(dark)), hn::Set(whole, 128)));
        auto const scaled = finelyScaledPixels(pixels, hn::Sub(hn::Set(whole, 65535), dark));
        hn::RebindToUnsigned<TagInt> const bits;
        auto const alpha = hn::BitCast(whole, hn::ShiftRight<24>(hn::BitCast(bits, pixels)));
        return hn::Or(hn::AndNot(alphaBits, scaled), hn::ShiftLeft<24>(hn::Max(alpha, opaque)));
    });
}

/// `color` is 0…1.
HWY_INLINE void mixColor(CanvasPixels& pixels, Vec3 const& color, Vec strength) {
    pixels.color = mixed(pixels.color, scaled(color, set(255)), strength);
    pixels.raiseAlpha(strength);
}

/// Shadow, edge and border of the box with what shows of the picture among them. `shadow` begins with the span, and can
/// be read past its end; where it is null the shadow is worked out.
HWY_INLINE void drawEdge(CameraPlan const& plan, PictureRow const& picture, std::uint16_t const* shadow,
                         std::uint8_t* row, float dy, PixelSpan span) {
    auto const& u = plan.uniforms();
    auto const& box = plan.mapping();
    hn::Rebind<std::uint16_t, TagInt> const words;
    forPixels(row, span.begin, span.end, [&](CanvasPixels& pixels, int x) HWY_ATTR {
        auto const dx = centersFrom(x, u.center.x);
        if (plan.hasShadow()) {
            auto strength = hn::Zero(Tag());
            if (shadow) {
                auto const dark = hn::PromoteTo(TagInt(), hn::LoadU(words, shadow + (x - span.begin)));
                strength = mul(hn::ConvertTo(Tag(), dark), set(1.0f / 65535));
            } else {
                strength = shadowStrength(plan, dx, dy);
            }
            pixels.darken(0, strength);
            pixels.raiseAlpha(strength);
        }
        auto const distance = boxDistance(dx, set(dy), box.halfSize, box.radius);
        mixColor(pixels, picture(x, dx), mul(smoothlyCovered(distance), set(u.opacity)));
        if (!plan.hasBorder()) return;
        auto const line = smoothlyCovered(sub(hn::Abs(distance), set(u.borderWidth / 2)));
        pixels.mixTo(rgb(u.borderColor), mul(line, set(u.borderColor.w * u.opacity)));
    });
}

/// The picture and nothing else.
HWY_INLINE void drawInside(CameraPlan const& plan, PictureRow const& picture, std::uint8_t* row, PixelSpan span) {
    forPackedPixels(row, span.begin, span.end, [&](VecInt, int x) HWY_ATTR {
        auto const color = picture(x, centersFrom(x, plan.uniforms().center.x));
        return packedOpaque(picture.isWithin() ? color : clamped01(color));
    });
}

void boxRow(CameraPlan const& plan, CameraScratch& scratch, std::uint16_t const* shadow, std::uint8_t* row, int y) {
    auto const spans = plan.spans(y);
    auto const box = shadow ? spans.box : spans.all;
    PictureRow const picture(plan, scratch, offsetOf(plan, y), box);
    auto const shadowFrom = [&](int x) { return shadow ? shadow + (x - plan.columns().begin) : nullptr; };
    auto const edge = [&](int begin, int end) HWY_ATTR {
        drawEdge(plan, picture, shadowFrom(begin), row, offsetOf(plan, y), {begin, end});
    };
    auto const dark = [&](int begin, int end) HWY_ATTR {
        if (shadow) drawShadow(shadowFrom(begin), row, begin, end);
    };
    if (box.isEmpty()) return dark(spans.all.begin, spans.all.end);
    dark(spans.all.begin, box.begin);
    if (spans.inside.isEmpty()) {
        edge(box.begin, box.end);
    } else {
        edge(box.begin, spans.inside.begin);
        drawInside(plan, picture, row, spans.inside);
        edge(spans.inside.end, box.end);
    }
    dark(box.end, spans.all.end);
}

void personRow(CameraPlan const& plan, CameraScratch& scratch, std::uint8_t* row, int y) {
    auto const& u = plan.uniforms();
    auto const half = plan.mapping().halfSize;
    auto const offsetY = offsetOf(plan, y);
    auto const droppedY = offsetY - personShadowDrop(u);
    auto const showsPerson = std::abs(offsetY) <= half.y;
    auto const showsShadow = std::abs(droppedY) <= half.y;
    if (!showsPerson && !showsShadow) return;
    auto const columns = plan.columns();
    PictureRow const picture(plan, scratch, offsetY, showsPerson ? columns : PixelSpan{columns.begin, columns.begin});
    auto const personPlace = plan.matteRow(offsetY);
    auto const shadowPlace = plan.matteRow(droppedY);
    auto const zero = hn::Zero(Tag());
    forPixels(row, columns.begin, columns.end, [&](CanvasPixels& pixels, int x) HWY_ATTR {
        auto const i = static_cast<std::size_t>(x - columns.begin);
        auto const dx = centersFrom(x, u.center.x);
        auto const isInside = hn::Le(hn::Abs(dx), set(half.x));
        auto const matte = [&](AxisPlace place) HWY_ATTR {
            auto const red = CellVectors(plan.matte(), plan.matteColumns(), i, place).mixedChannel<0>();
            return hn::IfThenElseZero(isInside, mul(red, set(1.0f / 255)));
        };
        auto const person = showsPerson ? step(0.15f, 0.85f, matte(personPlace)) : zero;
        if (showsShadow) {
            auto const dark = clamp01(mul(matte(shadowPlace), set(0.30f * u.shadowOpacity * 2.0f)));
            auto const strength = mul(mul(dark, set(u.opacity)), sub(set(1), person));
            pixels.darken(0, strength);
            pixels.raiseAlpha(strength);
        }
        if (!hn::AllTrue(Tag(), hn::Le(person, zero))) mixColor(pixels, picture(x, dx), mul(person, set(u.opacity)));
    });
}

}
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace tavaro {

HWY_EXPORT(boxRow);
HWY_EXPORT(personRow);
HWY_EXPORT(strengths);

void drawCameraRow(CameraPlan const& plan, CameraScratch& scratch, std::uint16_t const* shadow, std::uint8_t* row,
                   int y) {
    if (plan.isCutOut()) return HWY_DYNAMIC_DISPATCH(personRow)(plan, scratch, row, y);
    HWY_DYNAMIC_DISPATCH(boxRow)(plan, scratch, shadow, row, y);
}

void shadowRow(CameraPlan const& plan, int y, std::uint16_t* out) { HWY_DYNAMIC_DISPATCH(strengths)(plan, y, out); }

}
#endif
