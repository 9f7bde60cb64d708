// The camera's colour look at vectors of pixels. Compiled once for each kind of vector unit, by the sources that
// include it.

#if defined(TAVARO_GRADE_VECTORS) == defined(HWY_TARGET_TOGGLE)
#ifdef TAVARO_GRADE_VECTORS
#undef TAVARO_GRADE_VECTORS
#else
#define TAVARO_GRADE_VECTORS
#endif

#include <hwy/highway.h>

#include <TavaroCore/Looks/CubeLUT.h>
#include <TavaroRender/Kernels/Private/CameraPlan.h>
#include <TavaroRender/Kernels/Private/CanvasVectors-inl.h>
#include <TavaroRender/Kernels/Private/GradeFormula.h>
#include <TavaroRender/Kernels/Private/PowerVectors-inl.h>

#include <array>
#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

HWY_INLINE Vec lumaOf(Vec3 const& c) {
    return mulAdd(set(0.2126f), c.x, mulAdd(set(0.7152f), c.y, mul(set(0.0722f), c.z)));
}

HWY_INLINE Vec3 clamped01(Vec3 const& c) { return {clamp01(c.x), clamp01(c.y), clamp01(c.z)}; }

/// A channel, 0…1, in another light.
HWY_INLINE Vec lit(LightCurve const& curve, Vec encoded) {
    Tag const tag;
    auto const isLow = hn::Lt(encoded, set(curve.low));
    auto const isHigh = hn::Gt(encoded, set(curve.high));
    auto const above = mulAdd(encoded, set(curve.slope), set(curve.offset));
    auto result = hn::IfThenElse(isLow, mul(encoded, set(curve.gain)), above);
    if (!hn::AllTrue(tag, hn::Or(isLow, isHigh))) {
        auto const power = [](Vec base, float exponent)
                               HWY_ATTR { return exp2Of(mul(log2Of(hn::Max(base, set(1e-6f))), set(exponent))); };
        auto const between =
            brightens(curve)
                ? sub(mul(power(mul(encoded, set(curve.gain / 12.92f)), 1.0f / 2.4f), set(1.055f)), set(0.055f))
                : mul(power(mul(add(encoded, set(0.055f)), set(1 / 1.055f)), 2.4f), set(12.92f * curve.gain));
        result = hn::IfThenElse(hn::Or(isLow, isHigh), result, between);
    }
    return clamp01(result);
}

using Channels = hn::CappedTag<float, 4>; // of one colour, or as many as the vector unit takes
using ChannelVec = hn::Vec<Channels>;

/// The places of colours in a table: where the lowest corner of each one's cell begins, and the way past it.
struct TableCells {
    alignas(64) std::int32_t corner[16];
    alignas(64) float red[16];
    alignas(64) float green[16];
    alignas(64) float blue[16];

    HWY_INLINE TableCells(CubeLUT const& lut, Vec3 const& color) {
        auto const last = static_cast<float>(lut.size - 1);
        auto const place = [&](Vec value, float* between) HWY_ATTR {
            auto const position = mul(clamp01(value), set(last));
            auto const low = hn::Min(hn::Floor(position), set(last - 1));
            hn::Store(sub(position, low), Tag(), between);
            return hn::ConvertTo(TagInt(), low);
        };
        auto const size = hn::Set(TagInt(), lut.size);
        auto const plane = place(color.z, blue);
        auto const row = hn::Add(hn::Mul(plane, size), place(color.y, green));
        auto const entry = hn::Add(hn::Mul(row, size), place(color.x, red));
        hn::Store(hn::Mul(entry, hn::Set(TagInt(), 3)), TagInt(), corner);
    }
};

/// The channels from `c` on, mixed between an entry and the one to its right. Nothing past that one is read.
HWY_INLINE ChannelVec mixedAlongRed(float const* entry, std::size_t c, float between) {
    Channels const channels;
    auto const left = hn::LoadU(channels, entry + c);
#if HWY_TARGET == HWY_SCALAR
    auto const right = hn::LoadU(channels, entry + 3 + c);
#else
    auto const right = hn::ShiftRightLanes<1>(channels, hn::LoadU(channels, entry + 2));
#endif
    return mulAdd(hn::Sub(right, left), hn::Set(channels, between), left);
}

/// The table's colour, read trilinearly: one pixel at a time, its channels side by side.
HWY_INLINE Vec3 lookedUp(CubeLUT const& lut, Vec3 const& color) {
    Tag const tag;
    Channels const channels;
    auto const step = hn::Lanes(channels);
    auto const row = 3 * static_cast<std::size_t>(lut.size); // numbers from one to the next
    auto const plane = row * static_cast<std::size_t>(lut.size);
    TableCells const cells(lut, color);
    alignas(64) float results[4 * 16];
    for (std::size_t i = 0; i < hn::Lanes(tag); ++i) {
        auto const* const corner = lut.values.data() + cells.corner[i];
        auto const green = hn::Set(channels, cells.green[i]);
        auto const blue = hn::Set(channels, cells.blue[i]);
        for (std::size_t c = 0; c < 3; c += step) {
            auto const near = mixedAlongRed(corner, c, cells.red[i]);
            auto const nearUp = mixedAlongRed(corner + row, c, cells.red[i]);
            auto const far = mixedAlongRed(corner + plane, c, cells.red[i]);
            auto const farUp = mixedAlongRed(corner + plane + row, c, cells.red[i]);
            auto const front = mulAdd(hn::Sub(nearUp, near), green, near);
            auto const back = mulAdd(hn::Sub(farUp, far), green, far);
            hn::StoreU(mulAdd(hn::Sub(back, front), blue, front), channels, results + 4 * i + c);
        }
    }
    Vec red, green, blue, unused;
    hn::LoadInterleaved4(tag, results, red, green, blue, unused);
    return {red, green, blue};
}

/// The look of one frame; `local` is the point of the box along each axis, less a half.
class GradeVectors {
public:
    explicit GradeVectors(CameraPlan const& plan)
        : u_(plan.uniforms())
        , light_(plan.light())
        , lut_(plan.lut())
        , slope_((1 - u_.grade1.y) * u_.grade0.y)
        , start_((0.5f - 0.5f * u_.grade0.y) * (1 - u_.grade1.y) + u_.grade1.y) {}

    HWY_INLINE Vec3 operator()(Vec3 const& color, Vec localX, Vec localY) const {
        auto graded = channels(color);
        if (u_.grade0.z != 1) {
            auto const grey = lumaOf(graded);
            auto const amount = set(u_.grade0.z);
            graded = {mixed(grey, graded.x, amount), mixed(grey, graded.y, amount), mixed(grey, graded.z, amount)};
        }
        if (u_.grade1.w > leastLook) graded = splitToned(graded);
        if (u_.grade1.z > leastLook) {
            auto const distance = mul(size(localX, localY), set(1.414f));
            graded = scaled(graded, sub(set(1), mul(smooth(0.35f, 0.95f, distance), set(u_.grade1.z * 0.6f))));
        }
        if (lut_) graded = lookedUp(*lut_, graded);
        graded = clamped01(graded);
        return u_.lookStrength == 1 ? graded : mixed(color, graded, set(u_.lookStrength));
    }

private:
    HWY_INLINE Vec3 channels(Vec3 const& color) const {
        auto const contrasted = [&](Vec v) HWY_ATTR { return mulAdd(v, set(slope_), set(start_)); };
        return {contrasted(lit(light_[0], color.x)), contrasted(lit(light_[1], color.y)),
                contrasted(lit(light_[2], color.z))};
    }

    HWY_INLINE Vec3 splitToned(Vec3 const& color) const {
        auto const bright = smooth(0.2f, 0.8f, lumaOf(color));
        auto const amount = u_.grade1.w;
        auto const toned = [&](Vec v, float shadow, float highlight)
                               HWY_ATTR { return mulAdd(mixed(set(shadow), set(highlight), bright), set(amount), v); };
        return {toned(color.x, -0.04f, 0.06f), toned(color.y, 0.02f, 0.02f), toned(color.z, 0.06f, -0.05f)};
    }

    CameraUniforms const& u_;
    std::array<LightCurve, 3> const& light_;
    CubeLUT const* lut_;
    float slope_;
    float start_;
};

}
HWY_AFTER_NAMESPACE();

#endif
