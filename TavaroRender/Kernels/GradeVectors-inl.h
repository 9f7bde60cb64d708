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
#include <TavaroRender/Kernels/CameraPlan.h>
#include <TavaroRender/Kernels/FloatVectors-inl.h>
#include <TavaroRender/Kernels/GradeFormula.h>

#include <cstring>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

HWY_INLINE Vec lumaOf(Vec3 const& c) {
    return add(add(mul(set(0.2126f), c.x), mul(set(0.7152f), c.y)), mul(set(0.0722f), c.z));
}

HWY_INLINE Vec3 clamped01(Vec3 const& c) { return {clamp01(c.x), clamp01(c.y), clamp01(c.z)}; }

/// A value of a curve, between its two entries.
HWY_INLINE Vec onCurve(float const* curve, Vec value) {
    Tag const tag;
    auto const top = GradeCurves::highest * GradeCurves::stepsPerUnit;
    auto const place = hn::Min(hn::Max(mul(value, set(GradeCurves::stepsPerUnit)), hn::Zero(tag)), set(top));
    auto const index = hn::ConvertTo(TagInt(), place);
    alignas(64) std::int32_t indices[16];
    alignas(64) float pairs[32];
    hn::Store(index, TagInt(), indices);
    for (std::size_t i = 0; i < hn::Lanes(tag); ++i) std::memcpy(pairs + 2 * i, curve + indices[i], 8);
    Vec low, high;
    hn::LoadInterleaved2(tag, pairs, low, high);
    return mixed(low, high, sub(place, hn::ConvertTo(tag, index)));
}

using Channels = hn::CappedTag<float, 4>; // of one colour, or as many as the vector unit takes
using ChannelVec = hn::Vec<Channels>;

/// The place of one colour in a table.
struct TableCell {
    std::size_t entry; // the cell's lowest corner
    float red, green, blue;

    TableCell(CubeLUT const& lut, float r, float g, float b) {
        auto const n = static_cast<std::size_t>(lut.size);
        auto const place = [&](float value, float& between) {
            auto const position = saturate(value) * static_cast<float>(n - 1);
            auto const low = std::min(static_cast<std::size_t>(position), n - 2);
            between = position - static_cast<float>(low);
            return low;
        };
        entry = (place(b, blue) * n + place(g, green)) * n + place(r, red);
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
    return hn::MulAdd(hn::Sub(right, left), hn::Set(channels, between), left);
}

/// The table's colour, read trilinearly: one pixel at a time, its channels side by side.
HWY_INLINE Vec3 lookedUp(CubeLUT const& lut, Vec3 const& color) {
    Tag const tag;
    Channels const channels;
    auto const n = static_cast<std::size_t>(lut.size);
    alignas(64) float memory[3][16];
    hn::Store(color.x, tag, memory[0]);
    hn::Store(color.y, tag, memory[1]);
    hn::Store(color.z, tag, memory[2]);
    for (std::size_t i = 0; i < hn::Lanes(tag); ++i) {
        TableCell const cell(lut, memory[0][i], memory[1][i], memory[2][i]);
        for (std::size_t c = 0; c < 3; c += hn::Lanes(channels)) {
            auto const along = [&](std::size_t offset) HWY_ATTR {
                return mixedAlongRed(lut.values.data() + 3 * (cell.entry + offset), c, cell.red);
            };
            auto const plane = [&](std::size_t offset) HWY_ATTR {
                auto const near = along(offset);
                return hn::MulAdd(hn::Sub(along(offset + n), near), hn::Set(channels, cell.green), near);
            };
            auto const near = plane(0);
            auto const result = hn::MulAdd(hn::Sub(plane(n * n), near), hn::Set(channels, cell.blue), near);
            alignas(16) float values[4];
            hn::Store(result, channels, values);
            for (std::size_t j = 0; j < hn::Lanes(channels) && c + j < 3; ++j) memory[c + j][i] = values[j];
        }
    }
    return {hn::Load(tag, memory[0]), hn::Load(tag, memory[1]), hn::Load(tag, memory[2])};
}

/// The look of one frame; `local` is the point of the box along each axis, less a half.
class GradeVectors {
public:
    explicit GradeVectors(CameraPlan const& plan)
        : u_(plan.uniforms())
        , curves_(plan.curves())
        , lut_(plan.lut())
        , slope_((1 - u_.grade1.y) * u_.grade0.y)
        , start_((0.5f - 0.5f * u_.grade0.y) * (1 - u_.grade1.y) + u_.grade1.y) {}

    HWY_INLINE Vec3 operator()(Vec3 const& color, Vec localX, Vec localY) const {
        auto graded = channels(color);
        if (u_.grade0.z != 1) {
            auto const grey = lumaOf(graded);
            graded = mixed(Vec3{grey, grey, grey}, graded, set(u_.grade0.z));
        }
        if (u_.grade1.w > leastLook) graded = splitToned(graded);
        if (u_.grade1.z > leastLook) {
            auto const distance = mul(size(localX, localY), set(1.414f));
            graded = scaled(graded, sub(set(1), mul(step(0.35f, 0.95f, distance), set(u_.grade1.z * 0.6f))));
        }
        if (lut_) graded = lookedUp(*lut_, graded);
        return mixed(color, clamped01(graded), set(u_.lookStrength));
    }

private:
    HWY_INLINE Vec3 channels(Vec3 const& color) const {
        if (!curves_.areStraight())
            return {onCurve(curves_.channel(0), color.x), onCurve(curves_.channel(1), color.y),
                    onCurve(curves_.channel(2), color.z)};
        auto const straight = [&](Vec v) HWY_ATTR { return add(mul(clamp01(v), set(slope_)), set(start_)); };
        return {straight(color.x), straight(color.y), straight(color.z)};
    }

    HWY_INLINE Vec3 splitToned(Vec3 const& color) const {
        auto const bright = step(0.2f, 0.8f, lumaOf(color));
        auto const amount = u_.grade1.w;
        auto const toned = [&](Vec v, float shadow, float highlight) HWY_ATTR {
            return add(v, mul(mixed(set(shadow), set(highlight), bright), set(amount)));
        };
        return {toned(color.x, -0.04f, 0.06f), toned(color.y, 0.02f, 0.02f), toned(color.z, 0.06f, -0.05f)};
    }

    CameraUniforms const& u_;
    GradeCurves const& curves_;
    CubeLUT const* lut_;
    float slope_;
    float start_;
};

}
HWY_AFTER_NAMESPACE();

#endif
