#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroRender/Kernels/BackgroundRow.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <TavaroRender/Kernels/Private/GradientVectors-inl.h>

#include <cmath>
#include <cstring>

#include <TavaroRender/Kernels/Private/BackgroundRow.h>
#include <TavaroRender/Kernels/Private/Colour.h>
#include <TavaroRender/Kernels/Private/PixelStore.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

float secondAuroraBand(CompositeUniforms const& u, float v) {
    return std::sin((v * 1.7f - u.time * u.bgParam.x * 1.3f) * 2.0f) * 0.5f + 0.5f;
}

/// The planes have room for whole vectors.
void drawGradient(BackgroundRows const& rows, int y, int xBegin, int xEnd, ColorPlanes& out) {
    Tag const tag;
    auto const n = static_cast<int>(hn::Lanes(tag));
    auto const& u = rows.uniforms();
    Point p;
    p.v = hn::Div(set(static_cast<float>(y) + 0.5f), set(u.canvasSize.y));
    auto const secondBand = rows.mode() == BackgroundMode::aurora
                                ? secondAuroraBand(u, (static_cast<float>(y) + 0.5f) / u.canvasSize.y)
                                : 0.0f;
    auto const firstColor = [&](int x) HWY_ATTR {
        auto const& columns = rows.columns();
        return Vec3{hn::LoadU(tag, columns.r.data() + x), hn::LoadU(tag, columns.g.data() + x),
                    hn::LoadU(tag, columns.b.data() + x)};
    };
    CellNoise noise;
    for (int x = xBegin; x < xEnd; x += n) {
        p.u = hn::Div(hn::Iota(tag, static_cast<float>(x) + 0.5f), set(u.canvasSize.x));
        Vec3 color;
        switch (rows.mode()) {
        case BackgroundMode::linear: color = linearGradient(rows, p); break;
        case BackgroundMode::radial: color = radialGradient(rows, p); break;
        case BackgroundMode::mesh: color = mesh(rows, p, noise); break;
        default: color = aurora(rows, p, firstColor(x), set(secondBand), noise); break;
        }
        auto const at = x - xBegin;
        hn::StoreU(color.x, tag, out.r.data() + at);
        hn::StoreU(color.y, tag, out.g.data() + at);
        hn::StoreU(color.z, tag, out.b.data() + at);
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
    , mode_(u.bgMode) {
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
