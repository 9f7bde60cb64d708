// The formulas' arithmetic on vectors of floats. Compiled once for each kind of vector unit, by the sources that
// include it. Every operation rounds once, as in the scalar formulas: comparisons between shapes come out the same, and
// so do the pixels of all machines. So there is no fused multiply-add here, nor what is made of it: the transcendental
// functions of hwy/contrib/math.

#if defined(TAVARO_FLOAT_VECTORS) == defined(HWY_TARGET_TOGGLE)
#ifdef TAVARO_FLOAT_VECTORS
#undef TAVARO_FLOAT_VECTORS
#else
#define TAVARO_FLOAT_VECTORS
#endif

#include <hwy/highway.h>

#include <TavaroRender/Kernels/Private/Arithmetic.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Tag = hn::ScalableTag<float>;
using TagInt = hn::RebindToSigned<Tag>;
using Vec = hn::Vec<Tag>;
using VecInt = hn::Vec<TagInt>;
using Mask = hn::Mask<Tag>;

struct Vec3 {
    Vec x, y, z;
};

HWY_INLINE Vec set(float v) { return hn::Set(Tag(), v); }
HWY_INLINE Vec3 set(Float3 c) { return {set(c.x), set(c.y), set(c.z)}; }
HWY_INLINE Vec add(Vec a, Vec b) { return hn::Add(a, b); }
HWY_INLINE Vec sub(Vec a, Vec b) { return hn::Sub(a, b); }
HWY_INLINE Vec mul(Vec a, Vec b) { return hn::Mul(a, b); }
HWY_INLINE Vec over(Vec a, Vec b) { return hn::Div(a, b); }
/// a·b + c, rounded twice.
template<class V> HWY_INLINE V mulAdd(V a, V b, V c) { return hn::Add(hn::Mul(a, b), c); }
HWY_INLINE Vec3 scaled(Vec3 const& a, Vec b) { return {mul(a.x, b), mul(a.y, b), mul(a.z, b)}; }
HWY_INLINE Vec fractOf(Vec v) { return hn::Sub(v, hn::Floor(v)); }
HWY_INLINE Vec clamp01(Vec v) { return hn::Min(hn::Max(v, hn::Zero(Tag())), set(1)); }
HWY_INLINE Vec mixed(Vec a, Vec b, Vec t) { return add(a, mul(sub(b, a), t)); }
HWY_INLINE Vec3 mixed(Vec3 const& a, Vec3 const& b, Vec t) {
    return {mixed(a.x, b.x, t), mixed(a.y, b.y, t), mixed(a.z, b.z, t)};
}
HWY_INLINE Vec3 mixed(Vec3 const& a, float to, Vec t) {
    return {mixed(a.x, set(to), t), mixed(a.y, set(to), t), mixed(a.z, set(to), t)};
}
HWY_INLINE Vec size(Vec x, Vec y) { return hn::Sqrt(add(mul(x, x), mul(y, y))); }
/// The smoothstep of the formulas.
HWY_INLINE Vec step(float edge0, float edge1, Vec v) {
    auto const t = clamp01(over(sub(v, set(edge0)), set(edge1 - edge0)));
    return mul(mul(t, t), sub(set(3), mul(set(2), t)));
}
HWY_INLINE Vec covered(Vec distance) { return sub(set(1), step(-1, 1, distance)); }

/// Channel 0…3 of RGBA pixels, 0…255.
template<int c> HWY_INLINE Vec channel(VecInt pixels) {
    auto const shifted = hn::ShiftRight<8 * c>(hn::BitCast(hn::RebindToUnsigned<Tag>(), pixels));
    return hn::ConvertTo(Tag(), hn::And(hn::BitCast(TagInt(), shifted), hn::Set(TagInt(), 255)));
}
HWY_INLINE Vec3 colorOf(VecInt pixels) { return {channel<0>(pixels), channel<1>(pixels), channel<2>(pixels)}; }

/// RGBA pixels of channels 0…255, rounded to nearest.
HWY_INLINE VecInt packed(Vec3 const& color, Vec alpha) {
    auto const byteOf = [](Vec v) HWY_ATTR {
        return hn::ConvertTo(TagInt(), add(hn::Min(hn::Max(v, hn::Zero(Tag())), set(255)), set(0.5f)));
    };
    return hn::Or(hn::Or(byteOf(color.x), hn::ShiftLeft<8>(byteOf(color.y))),
                  hn::Or(hn::ShiftLeft<16>(byteOf(color.z)), hn::ShiftLeft<24>(byteOf(alpha))));
}

}
HWY_AFTER_NAMESPACE();

#endif
