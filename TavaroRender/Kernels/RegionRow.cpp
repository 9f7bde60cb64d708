#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroRender/Kernels/RegionRow.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <TavaroRender/Kernels/Private/CanvasVectors-inl.h>
#include <TavaroRender/Kernels/Private/GradientVectors-inl.h>

#include <TavaroRender/Kernels/Private/PixelStore.h>
#include <TavaroRender/Kernels/Private/RegionRow.h>
#include <TavaroRender/Kernels/RegionUniforms.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

void tinted(Float4 color, std::uint8_t* row, int begin, int end) {
    auto const strength = set(color.w);
    forPixels(row, begin, end, [&](CanvasPixels& pixels, int) HWY_ATTR { pixels.mixTo(rgb(color), strength); });
}

void masked(RegionUniforms const& u, std::array<MaskPoint, 8> const& points, std::uint8_t* row, int y, int begin,
            int end) {
    auto const localY = (pixelCenter(0, y).y / u.texSize.y - u.origin.y) / u.size.y;
    forPixels(row, begin, end, [&](CanvasPixels& pixels, int x) HWY_ATTR {
        auto const uvX = over(centersFrom(x, 0), set(u.texSize.x));
        auto const localX = over(sub(uvX, set(u.origin.x)), set(u.size.x));
        auto const zero = hn::Zero(Tag());
        Vec3 sum{zero, zero, zero};
        auto alpha = zero;
        auto total = zero;
        for (auto const& point : points) {
            auto const dx = sub(localX, set(point.local.x));
            auto const dy = localY - point.local.y;
            auto const distance = add(mul(dx, dx), set(dy * dy));
            auto const isFar = hn::Gt(distance, set(0.001f));
            auto const weight = over(set(1), hn::IfThenElse(isFar, distance, set(0.001f)));
            sum = {add(sum.x, mul(weight, set(point.color.x))), add(sum.y, mul(weight, set(point.color.y))),
                   add(sum.z, mul(weight, set(point.color.z)))};
            alpha = add(alpha, mul(weight, set(point.color.w)));
            total = add(total, weight);
        }
        auto const grain = sub(hash(hn::Iota(Tag(), static_cast<float>(x)), set(static_cast<float>(y))), set(0.5f));
        auto const share = over(set(255), total);
        pixels.color = {add(mul(sum.x, share), grain), add(mul(sum.y, share), grain), add(mul(sum.z, share), grain)};
        pixels.alpha = mul(alpha, share);
    });
}

}
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace tavaro {

HWY_EXPORT(tinted);
HWY_EXPORT(masked);

void tintRow(Float4 color, std::uint8_t* row, int begin, int end) {
    if (begin < end) HWY_DYNAMIC_DISPATCH(tinted)(color, row, begin, end);
}

void maskRow(RegionUniforms const& uniforms, std::array<MaskPoint, 8> const& points, std::uint8_t* row, int y,
             int begin, int end) {
    HWY_DYNAMIC_DISPATCH(masked)(uniforms, points, row, y, begin, end);
}

}
#endif
