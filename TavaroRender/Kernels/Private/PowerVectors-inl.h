// Logarithms and powers of vectors of floats, the same on every machine. Compiled once for each kind of vector unit, by
// the sources that include it.

#if defined(TAVARO_POWER_VECTORS) == defined(HWY_TARGET_TOGGLE)
#ifdef TAVARO_POWER_VECTORS
#undef TAVARO_POWER_VECTORS
#else
#define TAVARO_POWER_VECTORS
#endif

#include <hwy/highway.h>

#include <TavaroRender/Kernels/Private/FloatVectors-inl.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

constexpr int mantissaBits = 23;

/// Of positive normal numbers, within 2e-7 of the result or of 1; powers of two are exact.
HWY_INLINE Vec log2Of(Vec v) {
    TagInt const whole;
    // As m · 2^e with m in √½ … √2, of which the logarithm is an odd series in (m − 1) / (m + 1).
    auto const rootHalf = hn::Set(whole, 0x3F3504F3);
    auto const bits = hn::BitCast(whole, v);
    auto const exponent = hn::ShiftRight<mantissaBits>(hn::Sub(bits, rootHalf));
    auto const m = hn::BitCast(Tag(), hn::Sub(bits, hn::ShiftLeft<mantissaBits>(exponent)));
    auto const s = over(sub(m, set(1)), add(m, set(1)));
    auto const square = mul(s, s);
    auto series = set(2 / (9 * 0.69314718f));
    for (auto const factor : {2 / (7 * 0.69314718f), 2 / (5 * 0.69314718f), 2 / (3 * 0.69314718f), 2 / 0.69314718f})
        series = mulAdd(series, square, set(factor));
    return mulAdd(series, s, hn::ConvertTo(Tag(), exponent));
}

/// 2^v for −126 … 127, within 4e-7 of the result.
HWY_INLINE Vec exp2Of(Vec v) {
    TagInt const whole;
    auto const nearest = hn::Floor(add(v, set(0.5f)));
    auto const rest = sub(v, nearest);
    auto power = set(0.000154035304f); // (ln 2)^k / k!
    for (auto const factor : {0.00133335581f, 0.00961812911f, 0.0555041087f, 0.240226507f, 0.693147181f, 1.0f})
        power = mulAdd(power, rest, set(factor));
    auto const exponent = hn::Add(hn::ConvertTo(whole, nearest), hn::Set(whole, 127));
    return mul(power, hn::BitCast(Tag(), hn::ShiftLeft<mantissaBits>(exponent)));
}

}
HWY_AFTER_NAMESPACE();

#endif
