#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroRender/Kernels/BackgroundRow.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <cmath>
#include <cstring>

#include <TavaroRender/Kernels/BackgroundRow.h>
#include <TavaroRender/Kernels/Colour.h>
#include <TavaroRender/Kernels/PixelStore.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Tag = hn::ScalableTag<float>;
using Vec = hn::Vec<Tag>;

struct Vec3 {
    Vec x, y, z;
};

HWY_INLINE Vec set(float v) { return hn::Set(Tag(), v); }
HWY_INLINE Vec add(Vec a, Vec b) { return hn::Add(a, b); }
HWY_INLINE Vec sub(Vec a, Vec b) { return hn::Sub(a, b); }
HWY_INLINE Vec mul(Vec a, Vec b) { return hn::Mul(a, b); }
HWY_INLINE Vec fractOf(Vec v) { return hn::Sub(v, hn::Floor(v)); }
HWY_INLINE Vec clamp01(Vec v) { return hn::Min(hn::Max(v, hn::Zero(Tag())), set(1)); }
HWY_INLINE Vec mixed(Vec a, Vec b, Vec t) { return add(a, mul(sub(b, a), t)); }
HWY_INLINE Vec3 mixed(Vec3 const& a, Vec3 const& b, Vec t) {
    return {mixed(a.x, b.x, t), mixed(a.y, b.y, t), mixed(a.z, b.z, t)};
}
HWY_INLINE Vec3 set(Float3 c) { return {set(c.x), set(c.y), set(c.z)}; }

/// As the scalar hash, operation by operation.
HWY_INLINE Vec hash(Vec x, Vec y) {
    x = fractOf(mul(x, set(123.34f)));
    y = fractOf(mul(y, set(456.21f)));
    auto const shift = add(mul(x, add(x, set(45.32f))), mul(y, add(y, set(45.32f))));
    return fractOf(mul(add(x, shift), add(y, shift)));
}

HWY_INLINE Vec noise(Vec x, Vec y) {
    auto const cornerX = hn::Floor(x);
    auto const cornerY = hn::Floor(y);
    auto const weight = [](Vec f) HWY_ATTR { return mul(mul(f, f), sub(set(3), mul(set(2), f))); };
    auto const weightX = weight(sub(x, cornerX));
    auto const nextX = add(cornerX, set(1));
    auto const nextY = add(cornerY, set(1));
    auto const top = mixed(hash(cornerX, cornerY), hash(nextX, cornerY), weightX);
    auto const bottom = mixed(hash(cornerX, nextY), hash(nextX, nextY), weightX);
    return mixed(top, bottom, weight(sub(y, cornerY)));
}

/// The sRGB curve for 0…1. Above the linear part the power 1/2.4 is the 5/3 of the fourth root, of which the polynomial
/// is within 5e-5 (an eightieth of a step of 8 bits).
HWY_INLINE Vec encoded(Vec linear) {
    auto const root = hn::Sqrt(hn::Sqrt(hn::Max(linear, hn::Zero(Tag()))));
    auto power = add(mul(root, set(0.0764924975f)), set(-0.3234316819f));
    power = add(mul(power, root), set(1.1120896146f));
    power = add(mul(power, root), set(0.1999536209f));
    power = add(mul(power, root), set(-0.0650813091f));
    return hn::IfThenElse(hn::Le(linear, set(0.0031308f)), mul(linear, set(12.92f)), power);
}

HWY_INLINE Vec3 encoded(Vec3 const& c) { return {encoded(c.x), encoded(c.y), encoded(c.z)}; }

struct Point {
    Vec x; // pixel centre
    Vec y;
    Vec u; // normalised
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

HWY_INLINE Vec3 mesh(BackgroundRows const& rows, Point const& p) {
    auto const drift = set(rows.uniforms().time * 0.02f);
    auto const n = noise(add(mul(p.u, set(3)), drift), add(mul(p.v, set(3)), drift));
    auto const shift = mul(sub(n, set(0.5f)), set(0.22f));
    auto const across = clamp01(add(p.u, shift));
    auto const top = mixed(set(rows.linearColor(0)), set(rows.linearColor(1)), across);
    auto const bottom = mixed(set(rows.linearColor(2)), set(rows.linearColor(3)), across);
    return encoded(mixed(top, bottom, clamp01(add(p.v, shift))));
}

HWY_INLINE Vec3 aurora(BackgroundRows const& rows, Point const& p, std::size_t column, float secondBand) {
    Tag const tag;
    auto const& columns = rows.columns();
    Vec3 const first{hn::LoadU(tag, columns.r.data() + column), hn::LoadU(tag, columns.g.data() + column),
                     hn::LoadU(tag, columns.b.data() + column)};
    auto const color = encoded(mixed(first, set(rows.linearColor(2)), set(secondBand * 0.55f)));
    auto const t = set(rows.uniforms().time * rows.uniforms().bgParam.x);
    auto const grain = mul(noise(add(mul(p.u, set(6)), t), add(mul(p.v, set(6)), t)), set(0.035f));
    return {clamp01(add(color.x, grain)), clamp01(add(color.y, grain)), clamp01(add(color.z, grain))};
}

float secondAuroraBand(CompositeUniforms const& u, float v) {
    return std::sin((v * 1.7f - u.time * u.bgParam.x * 1.3f) * 2.0f) * 0.5f + 0.5f;
}

/// The planes have room for whole vectors.
void drawGradient(BackgroundRows const& rows, int y, int xBegin, int xEnd, ColorPlanes& out) {
    Tag const tag;
    auto const n = static_cast<int>(hn::Lanes(tag));
    auto const& u = rows.uniforms();
    Point p;
    p.y = set(static_cast<float>(y) + 0.5f);
    p.v = hn::Div(p.y, set(u.canvasSize.y));
    auto const secondBand = rows.mode() == BackgroundMode::aurora
                                ? secondAuroraBand(u, (static_cast<float>(y) + 0.5f) / u.canvasSize.y)
                                : 0.0f;
    for (int x = xBegin; x < xEnd; x += n) {
        p.x = hn::Iota(tag, static_cast<float>(x) + 0.5f);
        p.u = hn::Div(p.x, set(u.canvasSize.x));
        Vec3 color;
        switch (rows.mode()) {
        case BackgroundMode::linear: color = linearGradient(rows, p); break;
        case BackgroundMode::radial: color = radialGradient(rows, p); break;
        case BackgroundMode::mesh: color = mesh(rows, p); break;
        default: color = aurora(rows, p, static_cast<std::size_t>(x), secondBand); break;
        }
        auto const dither = hn::Div(sub(hash(p.x, p.y), set(0.5f)), set(255));
        auto const at = x - xBegin;
        hn::StoreU(add(color.x, dither), tag, out.r.data() + at);
        hn::StoreU(add(color.y, dither), tag, out.g.data() + at);
        hn::StoreU(add(color.z, dither), tag, out.b.data() + at);
    }
}

/// The last pixels of a run are drawn in a vector of their own, so that nothing past it is written.
void paint(ColorPlanes const& background, VeilPlanes const& veil, std::size_t first, std::size_t count, bool isOpaque,
           std::uint8_t* out) {
    Tag const tag;
    hn::RebindToSigned<Tag> const whole;
    auto const n = hn::Lanes(tag);
    auto const byteOf = [&](Vec v) HWY_ATTR { return hn::ConvertTo(whole, add(mul(clamp01(v), set(255)), set(0.5f))); };
    for (std::size_t i = 0; i < count; i += n) {
        auto const behind = hn::LoadU(tag, veil.behind.data() + first + i);
        auto const channel = [&](std::vector<float> const& from, std::vector<float> const& over) HWY_ATTR {
            return byteOf(add(mul(hn::LoadU(tag, from.data() + i), behind), hn::LoadU(tag, over.data() + first + i)));
        };
        auto const r = channel(background.r, veil.r);
        auto const g = channel(background.g, veil.g);
        auto const b = channel(background.b, veil.b);
        auto const a = isOpaque ? hn::Set(whole, 255) : byteOf(hn::LoadU(tag, veil.alpha.data() + first + i));
        auto const pixels = hn::Or(hn::Or(r, hn::ShiftLeft<8>(g)), hn::Or(hn::ShiftLeft<16>(b), hn::ShiftLeft<24>(a)));
        if (i + n <= count) {
            hn::StoreU(pixels, whole, reinterpret_cast<std::int32_t*>(out + 4 * i));
        } else {
            std::int32_t last[64];
            hn::StoreU(pixels, whole, last);
            std::memcpy(out + 4 * i, last, 4 * (count - i));
        }
    }
}

}
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace tavaro {

HWY_EXPORT(drawGradient);
HWY_EXPORT(paint);

namespace {

/// Planes hold whole vectors of any machine past their last pixel.
constexpr std::size_t vectorRoom = 64;

bool isInRange(Float4 c) { return saturate(c.x) == c.x && saturate(c.y) == c.y && saturate(c.z) == c.z; }

Float3 toLinear(Float4 c) { return {tavaro::toLinear(c.x), tavaro::toLinear(c.y), tavaro::toLinear(c.z)}; }

}

void ColorPlanes::resize(std::size_t count) {
    for (auto* plane : {&r, &g, &b}) plane->resize(count + vectorRoom);
}

void VeilPlanes::resize(std::size_t count) {
    for (auto* plane : {&behind, &r, &g, &b, &alpha}) plane->resize(count + vectorRoom);
}

BackgroundRows::BackgroundRows(CompositeUniforms const& u, ImageView image, int width)
    : uniforms_(u)
    , image_(image)
    , mode_(static_cast<BackgroundMode>(u.bgMode)) {
    Float4 const colors[4]{u.bgColor0, u.bgColor1, u.bgColor2, u.bgColor3};
    isGradient_ = mode_ >= BackgroundMode::linear && mode_ <= BackgroundMode::aurora;
    for (int i = 0; i < 4; ++i) {
        isGradient_ = isGradient_ && isInRange(colors[i]);
        linear_[i] = toLinear(colors[i]);
    }
    if (mode_ != BackgroundMode::aurora) return;
    columns_.resize(static_cast<std::size_t>(width));
    for (int x = 0; x < width; ++x) {
        auto const across = (static_cast<float>(x) + 0.5f) / u.canvasSize.x;
        auto const band = std::sin((across * 2.4f + u.time * u.bgParam.x) * 2.0f) * 0.5f + 0.5f;
        auto const color = mix(linear_[0], linear_[1], band);
        columns_.r[static_cast<std::size_t>(x)] = color.x;
        columns_.g[static_cast<std::size_t>(x)] = color.y;
        columns_.b[static_cast<std::size_t>(x)] = color.z;
    }
}

void BackgroundRows::draw(int y, int xBegin, int xEnd, ColorPlanes& out) const {
    if (xBegin >= xEnd) return;
    out.resize(static_cast<std::size_t>(xEnd - xBegin));
    if (isGradient_) return HWY_DYNAMIC_DISPATCH(drawGradient)(*this, y, xBegin, xEnd, out);
    for (int x = xBegin; x < xEnd; ++x) {
        auto const color = backgroundPixel(uniforms_, image_, pixelCenter(x, y));
        auto const at = static_cast<std::size_t>(x - xBegin);
        out.r[at] = color.x;
        out.g[at] = color.y;
        out.b[at] = color.z;
    }
}

void paintVeiled(ColorPlanes const& background, VeilPlanes const& veil, std::size_t first, std::size_t count,
                 bool isOpaque, std::uint8_t* out) {
    if (count > 0) HWY_DYNAMIC_DISPATCH(paint)(background, veil, first, count, isOpaque, out);
}

}
#endif
