#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroRender/Kernels/FastCursor.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <TavaroRender/Kernels/Private/CanvasVectors-inl.h>

#include <cmath>

#include <TavaroRender/Kernels/CursorUniforms.h>
#include <TavaroRender/Kernels/Private/CursorReach.h>
#include <TavaroRender/Kernels/Private/CursorShapes.h>
#include <TavaroRender/Kernels/Private/FastCursor.h>
#include <TavaroRender/Kernels/Private/PixelStore.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

/// Calls `draw(pixels, dx, dy)` for vectors of the pixels `begin` … `end` − 1 of a row; dx and dy are from `position`.
template<class Draw>
HWY_INLINE void forRow(std::uint8_t* row, int y, int begin, int end, Float2 position, Draw&& draw) {
    auto const dy = set(pixelCenter(0, y).y - position.y);
    forPixels(row, begin, end,
              [&](CanvasPixels& pixels, int x) HWY_ATTR { draw(pixels, centersFrom(x, position.x), dy); });
}

/// Any effect but the colour ripple.
void clickRow(CursorUniforms const& u, std::uint8_t* row, int y, int begin, int end) {
    auto const radius = u.clickRadius;
    auto const effect = u.clickEffect;
    auto const ringWidth = std::max(radius * 0.10f, 1.5f);
    forRow(row, y, begin, end, u.position, [&](CanvasPixels& pixels, Vec dx, Vec dy) HWY_ATTR {
        auto const distance = size(dx, dy);
        if (effect == ClickShape::spotlight)
            return pixels.darken(0.45f, mul(step(radius * 0.7f, radius * 2.2f, distance), set(u.clickOpacity)));
        auto const fromEdge = hn::Abs(sub(distance, set(radius)));
        auto strength = hn::Zero(Tag());
        if (effect == ClickShape::ripple) strength = sub(set(1), step(0, radius * 0.35f, fromEdge));
        if (effect == ClickShape::pulse) strength = sub(set(1), step(radius * 0.6f, radius, distance));
        if (effect == ClickShape::ring) strength = sub(set(1), step(ringWidth / 2, ringWidth, fromEdge));
        strength = mul(strength, set(u.clickOpacity * u.clickColor.w));
        pixels.mixTo(rgb(u.clickColor), strength);
        pixels.raiseAlpha(strength);
    });
}

/// Distance to the outline of the arrow, whose size is 1.
HWY_INLINE Vec arrowDistance(Vec x, Vec y) {
    Tag const tag;
    auto nearest = set(1e30f);
    auto inside = hn::Zero(TagInt());
    for (std::size_t i = 0, j = arrowPoints.size() - 1; i < arrowPoints.size(); j = i++) {
        auto const a = arrowPoints[j];
        auto const along = arrowPoints[i] - a;
        auto const px = sub(x, set(a.x));
        auto const py = sub(y, set(a.y));
        auto const t = clamp01(mul(add(mul(px, set(along.x)), mul(py, set(along.y))), set(1 / dot(along, along))));
        auto const ex = sub(px, mul(set(along.x), t));
        auto const ey = sub(py, mul(set(along.y), t));
        nearest = hn::Min(nearest, add(mul(ex, ex), mul(ey, ey)));
        if (along.y == 0) continue; // no ray to the right crosses it
        auto const spans = hn::Xor(hn::VecFromMask(TagInt(), hn::RebindMask(TagInt(), hn::Gt(set(a.y), y))),
                                   hn::VecFromMask(TagInt(), hn::RebindMask(TagInt(), hn::Gt(set(a.y + along.y), y))));
        auto const isLeft = hn::Lt(px, mul(py, set(along.x / along.y)));
        inside = hn::Xor(inside, hn::And(spans, hn::VecFromMask(TagInt(), hn::RebindMask(TagInt(), isLeft))));
    }
    auto const distance = hn::Sqrt(nearest);
    auto const isInside = hn::RebindMask(tag, hn::MaskFromVec(inside));
    return hn::IfThenElse(isInside, hn::Neg(distance), distance);
}

HWY_INLINE Vec shapeDistance(CursorUniforms const& u, Vec dx, Vec dy) {
    auto const extent = u.cursorSize;
    switch (u.style) {
    case CursorShape::arrow: return mul(arrowDistance(mul(dx, set(1 / extent)), mul(dy, set(1 / extent))), set(extent));
    case CursorShape::outline:
        return sub(hn::Abs(sub(size(dx, dy), set(extent * 0.34f))), set(std::max(extent * 0.09f, 1.5f) / 2));
    default: return sub(size(dx, dy), set(cursorRadius(u)));
    }
}

/// What surrounds the pointer: the glow, or the dark round the spotlight.
void haloRow(CursorUniforms const& u, std::uint8_t* row, int y, int begin, int end) {
    auto const isGlow = u.style == CursorShape::glow;
    auto const radius = u.cursorSize * (isGlow ? 0.28f : 2.6f);
    forRow(row, y, begin, end, u.position, [&](CanvasPixels& pixels, Vec dx, Vec dy) HWY_ATTR {
        auto const distance = size(dx, dy);
        if (isGlow)
            pixels.mixTo(rgb(u.fillColor),
                         mul(sub(set(1), step(radius, radius * 3.4f, distance)), set(0.35f * u.opacity)));
        else
            pixels.darken(0.35f, mul(step(radius * 0.55f, radius, distance), set(u.opacity)));
    });
}

void pointerRow(CursorUniforms const& u, std::uint8_t* row, int y, int begin, int end) {
    auto const taps = cursorTaps(u.velocity);
    auto const halfStroke = std::max(u.cursorSize * 0.055f, 1.0f) / 2;
    forRow(row, y, begin, end, u.position, [&](CanvasPixels& pixels, Vec dx, Vec dy) HWY_ATTR {
        auto fill = hn::Zero(Tag());
        auto outline = hn::Zero(Tag());
        for (int i = 0; i < taps; ++i) {
            auto const k = taps == 1 ? 0.0f : static_cast<float>(i) / static_cast<float>(taps - 1) - 1.0f;
            auto const d = shapeDistance(u, sub(dx, set(u.velocity.x * k)), sub(dy, set(u.velocity.y * k)));
            fill = add(fill, covered(d));
            outline = add(outline, covered(sub(hn::Abs(d), set(halfStroke))));
        }
        fill = mul(fill, set(u.opacity / static_cast<float>(taps)));
        outline = mul(outline, set(u.opacity * u.strokeColor.w / static_cast<float>(taps)));
        pixels.mixTo(rgb(u.fillColor), mul(fill, set(u.fillColor.w)));
        pixels.raiseAlpha(fill);
        pixels.mixTo(rgb(u.strokeColor), outline);
    });
}

}
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace tavaro {

HWY_EXPORT(clickRow);
HWY_EXPORT(haloRow);
HWY_EXPORT(pointerRow);

namespace {

/// Pixels of the canvas that a part of the drawing may change.
struct Box {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

/// What is reached, and one pixel more on each side.
Box boxOf(DrawingReach const& reach, MutableImageView canvas, int rowBegin, int rowEnd) {
    if (reach.extent == DrawingReach::Extent::nowhere) return {};
    if (reach.extent == DrawingReach::Extent::everywhere) return {0, rowBegin, canvas.width, rowEnd};
    return {placeWithin(reach.low.x - 1, canvas.width), std::max(placeWithin(reach.low.y - 1, canvas.height), rowBegin),
            placeWithin(reach.high.x + 2, canvas.width),
            std::min(placeWithin(reach.high.y + 2, canvas.height), rowEnd)};
}

template<class DrawRow> void forRows(Box const& box, MutableImageView canvas, DrawRow&& drawRow) {
    if (box.left >= box.right) return;
    for (int y = box.top; y < box.bottom; ++y) drawRow(canvas.row(y), y, box.left, box.right);
}

void drawClick(CursorUniforms const& u, MutableImageView canvas, int rowBegin, int rowEnd) {
    forRows(boxOf(clickReach(u), canvas, rowBegin, rowEnd), canvas, [&](std::uint8_t* row, int y, int begin, int end) {
        if (u.clickEffect != ClickShape::prism) return HWY_DYNAMIC_DISPATCH(clickRow)(u, row, y, begin, end);
        for (int x = begin; x < end; ++x)
            storePixel(row + 4 * x, withClick(u, loadPixel(row + 4 * x), pixelCenter(x, y)));
    });
}

void drawPointer(CursorUniforms const& u, MutableImageView canvas, int rowBegin, int rowEnd) {
    forRows(boxOf(haloReach(u), canvas, rowBegin, rowEnd), canvas, [&](std::uint8_t* row, int y, int begin, int end) {
        HWY_DYNAMIC_DISPATCH(haloRow)(u, row, y, begin, end);
    });
    forRows(boxOf(pointerReach(u), canvas, rowBegin, rowEnd), canvas,
            [&](std::uint8_t* row, int y, int begin, int end) {
                HWY_DYNAMIC_DISPATCH(pointerRow)(u, row, y, begin, end);
            });
}

}

void cursorOverlayFast(CursorUniforms const& uniforms, MutableImageView canvas, int rowBegin, int rowEnd) {
    drawClick(uniforms, canvas, rowBegin, rowEnd);
    drawPointer(uniforms, canvas, rowBegin, rowEnd);
}

}
#endif
