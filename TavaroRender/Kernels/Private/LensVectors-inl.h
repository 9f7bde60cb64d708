// What the lens shows, at vectors of points. Compiled once for each kind of vector unit, by the sources that include
// it.

#if defined(TAVARO_LENS_VECTORS) == defined(HWY_TARGET_TOGGLE)
#ifdef TAVARO_LENS_VECTORS
#undef TAVARO_LENS_VECTORS
#else
#define TAVARO_LENS_VECTORS
#endif

#include <hwy/highway.h>

#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/Private/GradientVectors-inl.h>
#include <TavaroRender/Kernels/Private/Sampling.h>
#include <TavaroRender/Kernels/Private/TexelVectors-inl.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

struct Corners {
    VecInt topLeft, topRight, bottomLeft, bottomRight;
    Vec fractionX, fractionY;
};

/// The four texels round each point, read from anywhere in the picture.
HWY_INLINE Corners gather(ImageView image, Vec u, Vec v) {
    TagInt const whole;
    auto const position = [](Vec normalised, int extent) HWY_ATTR {
        auto const limit = static_cast<float>(extent);
        return hn::Max(hn::Min(sub(mul(normalised, set(limit)), set(0.5f)), set(limit - 1)), hn::Zero(Tag()));
    };
    // The last texel is reached as the whole of the way from the one before.
    auto const before = [](Vec place, int extent) HWY_ATTR {
        return hn::Min(hn::Floor(place), set(static_cast<float>(std::max(extent - 2, 0))));
    };
    auto const x = position(u, image.width);
    auto const y = position(v, image.height);
    auto const left = before(x, image.width);
    auto const top = before(y, image.height);
    auto const rowWords = image.stride / 4;
    auto const place = hn::Add(hn::Mul(hn::ConvertTo(whole, top), hn::Set(whole, static_cast<std::int32_t>(rowWords))),
                               hn::ConvertTo(whole, left));
    alignas(64) std::int32_t places[16];
    hn::Store(place, whole, places);
    Corners corners;
    auto const* texels = reinterpret_cast<std::int32_t const*>(image.pixels);
    auto const hasRight = image.width > 1;
    readPairs(texels, places, hasRight, corners.topLeft, corners.topRight);
    readPairs(texels + (image.height > 1 ? rowWords : 0), places, hasRight, corners.bottomLeft, corners.bottomRight);
    corners.fractionX = sub(x, left);
    corners.fractionY = sub(y, top);
    return corners;
}

template<int c> HWY_INLINE Vec bilinear(Corners const& t) {
    auto const top = mixed(channel<c>(t.topLeft), channel<c>(t.topRight), t.fractionX);
    auto const bottom = mixed(channel<c>(t.bottomLeft), channel<c>(t.bottomRight), t.fractionX);
    return mixed(top, bottom, t.fractionY);
}

/// The background seen through the lens: no pixel grid, no dither.
struct LensBackground {
    BackgroundRows const& rows;
    bool isImage;

    explicit LensBackground(BackgroundRows const& rows)
        : rows(rows)
        , isImage(backgroundIsImage(rows.uniforms(), rows.image())) {}

    /// False for gradients of colours out of range and pictures of odd layout, which the pixel formula draws.
    bool isUsable() const {
        if (isImage) return rows.image().stride % 4 == 0;
        return rows.isGradient() || rows.mode() < BackgroundMode::linear || rows.mode() > BackgroundMode::aurora;
    }

    HWY_INLINE Vec3 at(Vec x, Vec y) const {
        auto const& uniforms = rows.uniforms();
        auto const u = over(x, set(uniforms.canvasSize.x));
        auto const v = over(y, set(uniforms.canvasSize.y));
        if (isImage) {
            // Aspect fill is a line on each axis: two of its points give it.
            auto const image = rows.image();
            auto const origin = aspectFillUV({0, 0}, image.width, image.height, uniforms.canvasSize);
            auto const corner = aspectFillUV({1, 1}, image.width, image.height, uniforms.canvasSize);
            auto const texels =
                gather(image, mixed(set(origin.x), set(corner.x), u), mixed(set(origin.y), set(corner.y), v));
            return {bilinear<0>(texels), bilinear<1>(texels), bilinear<2>(texels)};
        }
        if (rows.isGradient()) {
            auto const color = gradientAt(rows, u, v);
            return scaled(color, set(255));
        }
        auto const color = backgroundColor(uniforms, {});
        return {set(color.x * 255), set(color.y * 255), set(color.z * 255)};
    }
};

HWY_INLINE void writeSeen(Vec3 const& color, int x, int count, std::uint8_t* seen) {
    auto* at = reinterpret_cast<std::int32_t*>(seen + 4 * static_cast<std::ptrdiff_t>(x));
    if (count >= static_cast<int>(hn::Lanes(Tag()))) return hn::StoreU(packed(color, set(255)), TagInt(), at);
    alignas(64) std::int32_t pixels[64];
    hn::Store(packed(color, set(255)), TagInt(), pixels);
    std::memcpy(at, pixels, 4 * static_cast<std::size_t>(count));
}

/// Calls `visit(px, x)` for the pixel centres of a row, a vector at a time; lanes past the end repeat the last pixel.
template<class Visit> HWY_INLINE void forCenters(int begin, int end, Visit&& visit) {
    auto const n = static_cast<int>(hn::Lanes(Tag()));
    for (int x = begin; x < end; x += n)
        visit(hn::Min(hn::Iota(Tag(), static_cast<float>(x) + 0.5f), set(static_cast<float>(end) - 0.5f)), x);
}

/// Writes what `see(px)` gives for them.
template<class See> HWY_INLINE void forSeen(int begin, int end, std::uint8_t* seen, See&& see) {
    auto const n = static_cast<int>(hn::Lanes(Tag()));
    forCenters(begin, end, [&](Vec px, int x) HWY_ATTR { writeSeen(see(px), x, std::min(n, end - x), seen); });
}

}
HWY_AFTER_NAMESPACE();

#endif
