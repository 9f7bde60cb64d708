#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroRender/Kernels/CameraRow.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <TavaroRender/Kernels/CanvasVectors-inl.h>
#include <TavaroRender/Kernels/GradeVectors-inl.h>
#include <TavaroRender/Kernels/TexelVectors-inl.h>

#include <TavaroRender/Kernels/CameraRow.h>
#include <TavaroRender/Kernels/PixelStore.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

HWY_INLINE Vec3 lower(Vec3 const& a, Vec3 const& b) {
    return {hn::Min(a.x, b.x), hn::Min(a.y, b.y), hn::Min(a.z, b.z)};
}
HWY_INLINE Vec3 higher(Vec3 const& a, Vec3 const& b) {
    return {hn::Max(a.x, b.x), hn::Max(a.y, b.y), hn::Max(a.z, b.z)};
}

/// The distance to a box of rounded corners whose middle is the origin.
HWY_INLINE Vec boxDistance(Vec x, Vec y, Float2 halfSize, float radius) {
    auto const zero = hn::Zero(Tag());
    auto const qx = add(sub(hn::Abs(x), set(halfSize.x)), set(radius));
    auto const qy = add(sub(hn::Abs(y), set(halfSize.y)), set(radius));
    auto const outside = size(hn::Max(qx, zero), hn::Max(qy, zero));
    return sub(add(outside, hn::Min(hn::Max(qx, qy), zero)), set(radius));
}

/// The camera's picture along one row of the canvas, graded; colours 0…255.
class PictureRow {
public:
    HWY_INLINE PictureRow(CameraPlan const& plan, float offsetY)
        : plan_(plan)
        , grade_(plan)
        , row_(plan.cameraRow(offsetY))
        , localY_(plan.mapping().local({0, offsetY}).y - 0.5f) {
        if (!plan.isSharpened()) return;
        north_ = plan.cameraRow(offsetY, -plan.reach());
        south_ = plan.cameraRow(offsetY, plan.reach());
    }

    /// From column `i` of the plan on; `dx` is from the box's centre.
    HWY_INLINE Vec3 operator()(std::size_t i, Vec dx) const {
        auto color = sampled(plan_.center(), i, row_);
        if (plan_.isSharpened()) color = sharpened(color, i);
        if (!plan_.isGraded()) return color;
        auto const localX = mul(over(dx, set(plan_.mapping().halfSize.x)), set(0.5f));
        auto const graded = grade_(scaled(color, set(1.0f / 255)), localX, set(localY_));
        return scaled(graded, set(255));
    }

private:
    HWY_INLINE Vec3 sampled(AxisPlan const& columns, std::size_t i, AxisPlace row) const {
        return CellVectors(plan_.camera(), columns, i, row).mixedColor();
    }

    HWY_INLINE Vec3 sharpened(Vec3 const& center, std::size_t i) const {
        auto const north = sampled(plan_.center(), i, north_);
        auto const south = sampled(plan_.center(), i, south_);
        auto const west = sampled(plan_.west(), i, row_);
        auto const east = sampled(plan_.east(), i, row_);
        auto const lowest = lower(lower(lower(north, south), lower(east, west)), center);
        auto const highest = higher(higher(higher(north, south), higher(east, west)), center);
        auto const amount = set(plan_.uniforms().sharpen * 2.4f);
        auto const channel = [&](Vec c, Vec n, Vec s, Vec w, Vec e, Vec low, Vec high) HWY_ATTR {
            auto const mean = mul(add(add(n, s), add(e, w)), set(0.25f));
            auto const slack = mul(sub(high, low), set(0.08f));
            auto const crisp = add(c, mul(sub(c, mean), amount));
            return hn::Max(hn::Min(crisp, add(high, slack)), sub(low, slack));
        };
        return {channel(center.x, north.x, south.x, west.x, east.x, lowest.x, highest.x),
                channel(center.y, north.y, south.y, west.y, east.y, lowest.y, highest.y),
                channel(center.z, north.z, south.z, west.z, east.z, lowest.z, highest.z)};
    }

    CameraPlan const& plan_;
    GradeVectors grade_;
    AxisPlace row_, north_, south_;
    float localY_;
};

HWY_INLINE void mixColor(CanvasPixels& pixels, Vec3 const& color, Vec strength) {
    pixels.color = mixed(pixels.color, color, strength);
    pixels.raiseAlpha(strength);
}

/// Shadow, edge and border of the box with what shows of the picture among them.
HWY_INLINE void drawEdge(CameraPlan const& plan, PictureRow const& picture, std::uint8_t* row, float dyCenter,
                         PixelSpan span) {
    auto const& u = plan.uniforms();
    auto const& box = plan.mapping();
    auto const dy = set(dyCenter);
    forPixels(row, span.begin, span.end, [&](CanvasPixels& pixels, int x) HWY_ATTR {
        auto const dx = centersFrom(x, u.center.x);
        if (plan.hasShadow()) {
            auto const distance = boxDistance(dx, sub(dy, set(u.halfSize.y * 0.06f)), box.halfSize, box.radius);
            auto const shade = sub(set(1), step(-u.halfSize.x * 0.1f, u.halfSize.x * 0.45f, distance));
            auto const strength = mul(mul(shade, shade), set(u.shadowOpacity * u.opacity));
            pixels.darken(0, strength);
            pixels.raiseAlpha(strength);
        }
        auto const distance = boxDistance(dx, dy, box.halfSize, box.radius);
        if (!hn::AllTrue(Tag(), hn::Ge(distance, set(1)))) {
            auto const color = picture(static_cast<std::size_t>(x - plan.columns().begin), dx);
            mixColor(pixels, color, mul(covered(distance), set(u.opacity)));
        }
        if (!plan.hasBorder()) return;
        auto const line = covered(sub(hn::Abs(distance), set(u.borderWidth / 2)));
        pixels.mixTo(rgb(u.borderColor), mul(line, set(u.borderColor.w * u.opacity)));
    });
}

/// The picture and nothing else.
HWY_INLINE void drawInside(CameraPlan const& plan, PictureRow const& picture, std::uint8_t* row, PixelSpan span) {
    forPixels(row, span.begin, span.end, [&](CanvasPixels& pixels, int x) HWY_ATTR {
        auto const dx = centersFrom(x, plan.uniforms().center.x);
        pixels.color = picture(static_cast<std::size_t>(x - plan.columns().begin), dx);
        pixels.alpha = set(255);
    });
}

void boxRow(CameraPlan const& plan, std::uint8_t* row, int y) {
    auto const offsetY = pixelCenter(0, y).y - plan.uniforms().center.y;
    PictureRow const picture(plan, offsetY);
    auto const spans = plan.spans(y);
    if (spans.inside.isEmpty()) return drawEdge(plan, picture, row, offsetY, spans.all);
    drawEdge(plan, picture, row, offsetY, {spans.all.begin, spans.inside.begin});
    drawInside(plan, picture, row, spans.inside);
    drawEdge(plan, picture, row, offsetY, {spans.inside.end, spans.all.end});
}

void personRow(CameraPlan const& plan, std::uint8_t* row, int y) {
    auto const& u = plan.uniforms();
    auto const half = plan.mapping().halfSize;
    auto const offsetY = pixelCenter(0, y).y - u.center.y;
    auto const droppedY = offsetY - personShadowDrop(u);
    auto const showsPerson = std::abs(offsetY) <= half.y;
    auto const showsShadow = std::abs(droppedY) <= half.y;
    if (!showsPerson && !showsShadow) return;
    PictureRow const picture(plan, offsetY);
    auto const personPlace = plan.matteRow(offsetY);
    auto const shadowPlace = plan.matteRow(droppedY);
    auto const zero = hn::Zero(Tag());
    forPixels(row, plan.columns().begin, plan.columns().end, [&](CanvasPixels& pixels, int x) HWY_ATTR {
        auto const i = static_cast<std::size_t>(x - plan.columns().begin);
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
        if (!hn::AllTrue(Tag(), hn::Le(person, zero))) mixColor(pixels, picture(i, dx), mul(person, set(u.opacity)));
    });
}

}
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace tavaro {

HWY_EXPORT(boxRow);
HWY_EXPORT(personRow);

void drawCameraRow(CameraPlan const& plan, std::uint8_t* row, int y) {
    if (plan.isCutOut()) return HWY_DYNAMIC_DISPATCH(personRow)(plan, row, y);
    HWY_DYNAMIC_DISPATCH(boxRow)(plan, row, y);
}

}
#endif
