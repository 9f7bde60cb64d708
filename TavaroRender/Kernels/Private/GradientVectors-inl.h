// Gradient backgrounds at vectors of points. Compiled once for each kind of vector unit, by the sources that include
// it.

#if defined(TAVARO_GRADIENT_VECTORS) == defined(HWY_TARGET_TOGGLE)
#ifdef TAVARO_GRADIENT_VECTORS
#undef TAVARO_GRADIENT_VECTORS
#else
#define TAVARO_GRADIENT_VECTORS
#endif

#include <cmath>

#include <hwy/highway.h>

#include <TavaroRender/Kernels/Private/BackgroundRow.h>
#include <TavaroRender/Kernels/Private/FloatVectors-inl.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

/// As the scalar hash, operation by operation.
HWY_INLINE Vec hash(Vec x, Vec y) {
    x = fractOf(mul(x, set(123.34f)));
    y = fractOf(mul(y, set(456.21f)));
    auto const shift = add(mul(x, add(x, set(45.32f))), mul(y, add(y, set(45.32f))));
    return fractOf(mul(add(x, shift), add(y, shift)));
}

/// Value noise. Neighbouring points mostly share a cell of it, whose corners are hashed once.
class CellNoise {
public:
    HWY_INLINE CellNoise() { left_ = top_ = topLeft_ = topRight_ = bottomLeft_ = bottomRight_ = set(nowhere); }

    HWY_INLINE Vec operator()(Vec x, Vec y) {
        auto const left = hn::Floor(x);
        auto const top = hn::Floor(y);
        auto const isHeld = hn::And(hn::Eq(left, left_), hn::Eq(top, top_));
        if (!hn::AllTrue(Tag(), isHeld)) {
            left_ = left;
            top_ = top;
            auto const right = add(left, set(1));
            auto const bottom = add(top, set(1));
            topLeft_ = hash(left, top);
            topRight_ = hash(right, top);
            bottomLeft_ = hash(left, bottom);
            bottomRight_ = hash(right, bottom);
        }
        auto const weight = [](Vec f) HWY_ATTR { return mul(mul(f, f), sub(set(3), mul(set(2), f))); };
        auto const across = weight(sub(x, left));
        auto const upper = mixed(topLeft_, topRight_, across);
        auto const lower = mixed(bottomLeft_, bottomRight_, across);
        return mixed(upper, lower, weight(sub(y, top)));
    }

private:
    static constexpr float nowhere = -1e30f;

    Vec left_, top_; // the cells of the last points
    Vec topLeft_, topRight_, bottomLeft_, bottomRight_;
};

/// The sRGB curve for 0…1. Above the linear part, a polynomial of the square root that is within 3.3e-4 of it (a
/// twelfth of a step of 8 bits).
HWY_INLINE Vec encoded(Vec linear) {
    auto const root = hn::Sqrt(hn::Max(linear, hn::Zero(Tag())));
    auto power = set(0.5173046372f);
    for (auto const factor : {-1.623661481f, 2.031575305f, -1.402735493f, 1.517950417f, -0.04010957623f})
        power = mulAdd(power, root, set(factor));
    return hn::IfThenElse(hn::Le(linear, set(0.0031308f)), mul(linear, set(12.92f)), power);
}

HWY_INLINE Vec3 encoded(Vec3 const& c) { return {encoded(c.x), encoded(c.y), encoded(c.z)}; }

/// Normalised.
struct Point {
    Vec u;
    Vec v;
};

HWY_INLINE Vec3 linearGradient(BackgroundRows const& rows, Point const& p) {
    auto const direction = rows.uniforms().bgParam;
    auto const along = add(mul(sub(p.u, set(0.5f)), set(direction.x)), mul(sub(p.v, set(0.5f)), set(direction.y)));
    return encoded(mixed(set(rows.linearColor(0)), set(rows.linearColor(1)), clamp01(add(along, set(0.5f)))));
}

HWY_INLINE Vec3 radialGradient(BackgroundRows const& rows, Point const& p) {
    auto const& u = rows.uniforms();
    auto const dx = mul(sub(p.u, set(u.bgParam.x)), set(u.canvasSize.x / std::max(u.canvasSize.y, 1.0f)));
    auto const dy = sub(p.v, set(u.bgParam.y));
    auto const distance = hn::Sqrt(add(mul(dx, dx), mul(dy, dy)));
    return encoded(mixed(set(rows.linearColor(0)), set(rows.linearColor(1)), clamp01(mul(distance, set(1.35f)))));
}

HWY_INLINE Vec3 mesh(BackgroundRows const& rows, Point const& p, CellNoise& noise) {
    auto const drift = set(rows.uniforms().time * 0.02f);
    auto const n = noise(add(mul(p.u, set(3)), drift), add(mul(p.v, set(3)), drift));
    auto const shift = mul(sub(n, set(0.5f)), set(0.22f));
    auto const across = clamp01(add(p.u, shift));
    auto const top = mixed(set(rows.linearColor(0)), set(rows.linearColor(1)), across);
    auto const bottom = mixed(set(rows.linearColor(2)), set(rows.linearColor(3)), across);
    return encoded(mixed(top, bottom, clamp01(add(p.v, shift))));
}

/// `first` is the mix of the first two colours, in linear light.
HWY_INLINE Vec3 aurora(BackgroundRows const& rows, Point const& p, Vec3 const& first, Vec secondBand,
                       CellNoise& noise) {
    auto const color = encoded(mixed(first, set(rows.linearColor(2)), mul(secondBand, set(0.55f))));
    auto const t = set(rows.uniforms().time * rows.uniforms().bgParam.x);
    auto const grain = mul(noise(add(mul(p.u, set(6)), t), add(mul(p.v, set(6)), t)), set(0.035f));
    return {clamp01(add(color.x, grain)), clamp01(add(color.y, grain)), clamp01(add(color.z, grain))};
}

HWY_INLINE Vec3 auroraAnywhere(BackgroundRows const& rows, Point const& p) {
    auto const t = rows.uniforms().time * rows.uniforms().bgParam.x;
    auto const band = [](Vec v) HWY_ATTR {
        alignas(64) float angles[16];
        hn::Store(mul(v, set(2)), Tag(), angles);
        for (std::size_t i = 0; i < hn::Lanes(Tag()); ++i) angles[i] = std::sin(angles[i]);
        return add(mul(hn::Load(Tag(), angles), set(0.5f)), set(0.5f));
    };
    auto const across = band(add(mul(p.u, set(2.4f)), set(t)));
    auto const down = band(sub(mul(p.v, set(1.7f)), set(t * 1.3f)));
    CellNoise noise;
    return aurora(rows, p, mixed(set(rows.linearColor(0)), set(rows.linearColor(1)), across), down, noise);
}

/// Any gradient (`rows.isGradient()`) at any normalised points, without dither.
HWY_INLINE Vec3 gradientAt(BackgroundRows const& rows, Vec u, Vec v) {
    Point const p{u, v};
    CellNoise noise;
    switch (rows.mode()) {
    case BackgroundMode::linear: return linearGradient(rows, p);
    case BackgroundMode::radial: return radialGradient(rows, p);
    case BackgroundMode::mesh: return mesh(rows, p, noise);
    default: return auroraAnywhere(rows, p);
    }
}

}
HWY_AFTER_NAMESPACE();

#endif
