#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "TavaroRender/Kernels/LensRim.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <TavaroRender/Kernels/Private/LensVectors-inl.h>
#include <TavaroRender/Kernels/Private/PowerVectors-inl.h>

#include <cmath>
#include <utility>

#include <TavaroRender/Kernels/Private/LensRow.h>
#include <TavaroRender/Kernels/Private/PixelStore.h>
#include <TavaroRender/Kernels/Private/ScreenLayer.h>

HWY_BEFORE_NAMESPACE();
namespace tavaro::HWY_NAMESPACE {

struct Affine {
    float scale = 1;
    float offset = 0;
};

/// What all points of a vector need to know of the frame.
struct RimScene {
    CompositeUniforms const& u;
    ScreenGeometry const& g;
    ScreenSampler const& sampler;
    LensBackground background;
    Affine mapX, mapY; // canvas to crop

    RimScene(LoupeScene const& scene, BackgroundRows const& rows)
        : u(scene.uniforms)
        , g(scene.geometry)
        , sampler(scene.sampler)
        , background(rows)
        , mapX(affine(u.contentOrigin.x, u.contentSize.x, u.zoomCenter.x))
        , mapY(affine(u.contentOrigin.y, u.contentSize.y, u.zoomCenter.y)) {}

    Affine affine(float origin, float extent, float center) const {
        auto const scale = 1.0 / (static_cast<double>(extent) * std::max(u.zoomScale, 0.0001f));
        auto const offset = center - 0.5 / std::max(u.zoomScale, 0.0001f) - origin * scale;
        return {static_cast<float>(scale), static_cast<float>(offset)};
    }

    /// Recorded colour at canvas points seen `magnification` times larger; of the channels, only `first`…`last`.
    template<int first, int last> HWY_INLINE void sample(Vec qx, Vec qy, Vec magnification, Vec3& sum) const {
        auto const texture = [&](Vec q, Affine const& map, float cropOrigin, float cropSize) HWY_ATTR {
            auto const source = add(mul(q, set(map.scale)), set(map.offset));
            return add(set(cropOrigin), mul(clamp01(source), set(cropSize)));
        };
        auto const tu = texture(qx, mapX, u.cropOrigin.x, u.cropSize.x);
        auto const tv = texture(qy, mapY, u.cropOrigin.y, u.cropSize.y);
        forEachLevel(over(set(sampler.coverage()), magnification), [&](int level, Vec weight) HWY_ATTR {
            addLevel<first, last>(gather(sampler.image(level), tu, tv), weight, sum);
        });
    }

    /// Calls `add(level, weight)` for the mip levels that samples of so many recorded pixels are made of: two
    /// neighbouring ones each, and lanes may need different ones.
    template<class Add> HWY_INLINE void forEachLevel(Vec covered, Add&& add) const {
        if (hn::AllTrue(Tag(), hn::Le(covered, set(1)))) return add(0, set(1));
        auto const highest = set(static_cast<float>(sampler.levelCount() - 1));
        auto const level = hn::Min(log2Of(hn::Max(covered, set(1))), highest);
        auto const from = static_cast<int>(hn::GetLane(hn::MinOfLanes(Tag(), level)));
        auto const to = static_cast<int>(std::ceil(hn::GetLane(hn::MaxOfLanes(Tag(), level))));
        for (int l = from; l <= to; ++l) {
            auto const distance = hn::Abs(sub(level, set(static_cast<float>(l))));
            auto const weight = hn::Max(sub(set(1), distance), hn::Zero(Tag()));
            if (!sampler.image(l).isEmpty() && !hn::AllFalse(Tag(), hn::Gt(weight, hn::Zero(Tag())))) add(l, weight);
        }
    }

    /// The recording inside its pane, the background beside it.
    template<int first, int last> HWY_INLINE void see(Vec qx, Vec qy, Vec magnification, Vec3& sum) const {
        auto const holds = clipHolds(qx, qy);
        Vec3 recorded{hn::Zero(Tag()), hn::Zero(Tag()), hn::Zero(Tag())};
        if (!hn::AllFalse(Tag(), holds)) sample<first, last>(qx, qy, magnification, recorded);
        auto const behind = hn::AllTrue(Tag(), holds) ? recorded : background.at(qx, qy);
        if (first <= 0) sum.x = add(sum.x, hn::IfThenElse(holds, recorded.x, behind.x));
        if (first <= 1 && last >= 1) sum.y = add(sum.y, hn::IfThenElse(holds, recorded.y, behind.y));
        if (last >= 2) sum.z = add(sum.z, hn::IfThenElse(holds, recorded.z, behind.z));
    }

    template<int first, int last> HWY_INLINE static void addLevel(Corners const& texels, Vec weight, Vec3& sum) {
        if (first <= 0 && last >= 0) sum.x = add(sum.x, mul(bilinear<0>(texels), weight));
        if (first <= 1 && last >= 1) sum.y = add(sum.y, mul(bilinear<1>(texels), weight));
        if (first <= 2 && last >= 2) sum.z = add(sum.z, mul(bilinear<2>(texels), weight));
    }

    HWY_INLINE Mask clipHolds(Vec x, Vec y) const {
        if (g.isEmpty) return hn::Lt(x, x);
        auto const inX = hn::Le(hn::Abs(sub(x, set(g.fullCenter.x))), set(g.fullHalf.x));
        return hn::And(inX, hn::Le(hn::Abs(sub(y, set(g.fullCenter.y))), set(g.fullHalf.y)));
    }
};

/// The samples of one vector of pixels. All are placed before the first one is read: a load that waits for the store of
/// its own address, sample by sample, would cost several times the arithmetic.
class RimSamples {
public:
    static constexpr int mostLevels = 6;

    /// Notes a sample of `level` at texel positions; the channels `first` … `last` of it count.
    HWY_INLINE void place(ImageView const& level, Vec x, Vec y, Vec weight, int first, int last) {
        auto const left = before(x, level.width);
        auto const top = before(y, level.height);
        auto const rowWords = static_cast<std::int32_t>(level.stride / 4);
        auto const whole =
            hn::Add(hn::Mul(hn::ConvertTo(TagInt(), top), hn::Set(TagInt(), rowWords)), hn::ConvertTo(TagInt(), left));
        auto& sample = samples_[count_++];
        sample.texels = reinterpret_cast<std::int32_t const*>(level.pixels);
        sample.rowWords = rowWords;
        sample.first = first;
        sample.last = last;
        hn::Store(whole, TagInt(), sample.places);
        hn::Store(sub(x, left), Tag(), sample.fractionX);
        hn::Store(sub(y, top), Tag(), sample.fractionY);
        hn::Store(weight, Tag(), sample.weight);
    }

    HWY_INLINE Vec3 sum() {
        for (int i = 0; i < count_; ++i) samples_[i].read();
        Vec3 sum{hn::Zero(Tag()), hn::Zero(Tag()), hn::Zero(Tag())};
        for (int i = 0; i < count_; ++i) samples_[i].addTo(sum);
        return sum;
    }

private:
    static constexpr int widest = 16;

    struct Sample {
        alignas(64) std::int32_t places[widest];
        alignas(64) float fractionX[widest];
        alignas(64) float fractionY[widest];
        alignas(64) float weight[widest];
        alignas(64) std::int32_t upper[2 * widest]; // two texels a pixel
        alignas(64) std::int32_t lower[2 * widest];
        std::int32_t const* texels;
        std::int32_t rowWords;
        int first;
        int last;

        HWY_INLINE void read() {
            for (std::size_t i = 0; i < hn::Lanes(TagInt()); ++i) {
                auto const* at = texels + places[i];
                std::memcpy(upper + 2 * i, at, 8);
                std::memcpy(lower + 2 * i, at + rowWords, 8);
            }
        }

        HWY_INLINE void addTo(Vec3& sum) const {
            Corners corners;
            hn::LoadInterleaved2(TagInt(), upper, corners.topLeft, corners.topRight);
            hn::LoadInterleaved2(TagInt(), lower, corners.bottomLeft, corners.bottomRight);
            corners.fractionX = hn::Load(Tag(), fractionX);
            corners.fractionY = hn::Load(Tag(), fractionY);
            auto const share = hn::Load(Tag(), weight);
            if (first <= 0) sum.x = add(sum.x, mul(bilinear<0>(corners), share));
            if (first <= 1 && last >= 1) sum.y = add(sum.y, mul(bilinear<1>(corners), share));
            if (last >= 2) sum.z = add(sum.z, mul(bilinear<2>(corners), share));
        }
    };

    /// The last texel is reached as the whole of the way from the one before.
    HWY_INLINE static Vec before(Vec place, int extent) {
        return hn::Min(hn::Floor(place), set(static_cast<float>(extent - 2)));
    }

    Sample samples_[4 * 3 * mostLevels]; // of 4 taps and 3 channels; mostly one level serves

    int count_ = 0;
};

/// The rim where it shows nothing but the recording, which is nearly everywhere.
class PlainRim {
public:
    PlainRim(LoupeScene const& scene, RimScene const& rim) : u_(scene.uniforms), rim_(rim), sampler_(scene.sampler) {
        auto const& g = scene.geometry;
        isUsable_ =
            !g.isEmpty && u_.loupeMag >= 1 && isInside({0, 0}) && sampler_.levelCount() <= RimSamples::mostLevels;
        for (int l = 0; isUsable_ && l < sampler_.levelCount(); ++l) {
            auto const image = sampler_.image(l);
            if (image.isEmpty()) continue;
            levels_[l] = {Axis(rim.mapX, u_.loupeCenter.x, u_.cropOrigin.x, u_.cropSize.x, image.width),
                          Axis(rim.mapY, u_.loupeCenter.y, u_.cropOrigin.y, u_.cropSize.y, image.height)};
            isUsable_ = image.width > 1 && image.height > 1 && image.stride % 4 == 0;
        }
    }

    /// Whether all that the pixels at these distances from the middle see, lies in the recording.
    HWY_INLINE bool holds(Vec dx, Vec dy) const {
        if (!isUsable_) return false;
        auto const share = over(size(dx, dy), set(u_.loupeRadius));
        // The outermost tap of the channel that is magnified least; all others lie between it and the middle.
        auto const farthest = add(mul(share, set(u_.loupeRadius)), set(0.375f));
        auto const bend = step(loupeFlatShare, 1, over(farthest, set(u_.loupeRadius)));
        auto const least = mul(mixed(set(u_.loupeMag), set(1), bend), set(1 - 0.006f * (u_.loupeMag - 1)));
        auto const reach = over(set(1.01f), hn::Max(least, set(0.0001f)));
        auto const isIn = [&](Vec d, float center, float middle, float half) HWY_ATTR {
            auto const seen = add(set(center), mul(add(d, hn::CopySign(set(0.375f), d)), reach));
            return hn::Lt(hn::Abs(sub(seen, set(middle))), set(half - 0.05f));
        };
        auto const& g = rim_.g;
        return hn::AllTrue(Tag(), hn::And(isIn(dx, u_.loupeCenter.x, g.fullCenter.x, g.fullHalf.x),
                                          isIn(dy, u_.loupeCenter.y, g.fullCenter.y, g.fullHalf.y)));
    }

    HWY_INLINE void place(RimSamples& samples, Vec tapX, Vec tapY, Vec magnification, int first, int last) const {
        auto const shrink = over(set(1), magnification);
        auto const x = mul(tapX, shrink);
        auto const y = mul(tapY, shrink);
        rim_.forEachLevel(mul(set(sampler_.coverage()), shrink),
                          [&](int level, Vec weight) HWY_ATTR { placeOn(samples, level, x, y, weight, first, last); });
    }

private:
    /// From an offset from the lens's middle, in canvas pixels, to texels.
    struct Axis {
        float scale = 0;
        float offset = 0;
        float low = 0;
        float high = 0;

        Axis() = default;
        Axis(Affine const& crop, float center, float cropOrigin, float cropSize, int extent) {
            auto const texels = static_cast<double>(extent);
            auto const last = static_cast<float>(extent - 1);
            auto const first = cropOrigin * texels - 0.5;
            auto const end = (cropOrigin + cropSize) * texels - 0.5;
            scale = static_cast<float>(crop.scale * cropSize * texels);
            offset = static_cast<float>(
                (cropOrigin + (static_cast<double>(center) * crop.scale + crop.offset) * cropSize) * texels - 0.5);
            low = std::clamp(static_cast<float>(std::min(first, end)), 0.0f, last);
            high = std::clamp(static_cast<float>(std::max(first, end)), 0.0f, last);
        }
        HWY_INLINE Vec texel(Vec canvas) const {
            return hn::Min(hn::Max(add(mul(canvas, set(scale)), set(offset)), set(low)), set(high));
        }
    };
    struct Level {
        Axis x, y;
    };

    bool isInside(Float2 offset) const {
        auto const p = u_.loupeCenter + offset - rim_.g.fullCenter;
        return std::abs(p.x) < rim_.g.fullHalf.x - 0.05f && std::abs(p.y) < rim_.g.fullHalf.y - 0.05f;
    }

    HWY_INLINE void placeOn(RimSamples& samples, int level, Vec x, Vec y, Vec weight, int first, int last) const {
        auto const& map = levels_[level];
        samples.place(sampler_.image(level), map.x.texel(x), map.y.texel(y), weight, first, last);
    }

    CompositeUniforms const& u_;
    RimScene const& rim_;
    ScreenSampler const& sampler_;
    Level levels_[RimSamples::mostLevels];
    bool isUsable_ = false;
};

/// What the lens's rim shows at points relative to its middle. Lanes of the outside are worked out as if they were rim.
HWY_INLINE Vec3 seeRim(RimScene const& scene, PlainRim const& plain, Vec dx, Vec dy, bool isPlain) {
    auto const& u = scene.u;
    auto const distance = size(dx, dy);
    auto const share = over(distance, set(u.loupeRadius));
    auto const fringe = mul(mul(step(0.86f, 1, share), set(0.006f)), set(u.loupeMag - 1.0f));
    auto const hasNoFringe = hn::AllTrue(Tag(), hn::Eq(fringe, hn::Zero(Tag())));
    auto const hasDirection = hn::Gt(distance, hn::Zero(Tag()));
    auto const directionX = hn::IfThenElseZero(hasDirection, over(dx, distance));
    auto const directionY = hn::IfThenElseZero(hasDirection, over(dy, distance));
    RimSamples samples;
    Vec3 sum{hn::Zero(Tag()), hn::Zero(Tag()), hn::Zero(Tag())};
    for (int k = 0; k < 4; ++k) {
        auto const jitter = set((static_cast<float>(k) + 0.5f) / 4 - 0.5f);
        auto const tapX = add(dx, mul(directionX, jitter));
        auto const tapY = add(dy, mul(directionY, jitter));
        auto const bend = step(loupeFlatShare, 1, over(hn::Abs(add(distance, jitter)), set(u.loupeRadius)));
        auto const middle = mixed(set(u.loupeMag), set(1), bend);
        auto const see = [&]<int first, int last>(std::integer_sequence<int, first, last>, Vec magnified) HWY_ATTR {
            auto const magnification = hn::Max(magnified, set(0.0001f));
            if (isPlain) return plain.place(samples, tapX, tapY, magnification, first, last);
            auto const qx = add(set(u.loupeCenter.x), over(tapX, magnification));
            auto const qy = add(set(u.loupeCenter.y), over(tapY, magnification));
            scene.see<first, last>(qx, qy, magnification, sum);
        };
        if (hasNoFringe) {
            see(std::integer_sequence<int, 0, 2>(), middle);
            continue;
        }
        see(std::integer_sequence<int, 0, 0>(), mul(middle, sub(set(1), fringe)));
        see(std::integer_sequence<int, 1, 1>(), middle);
        see(std::integer_sequence<int, 2, 2>(), mul(middle, add(set(1), fringe)));
    }
    return scaled(isPlain ? samples.sum() : sum, set(0.25f));
}

/// The rim's pixels `begin` … `end` − 1; false where the vectors cannot draw them.
bool seeRimRow(LoupeScene const& scene, BackgroundRows const& rows, int y, int begin, int end, std::uint8_t* seen) {
    RimScene const rim(scene, rows);
    PlainRim const plain(scene, rim);
    auto const canGather = scene.geometry.isEmpty || scene.sampler.image(0).stride % 4 == 0;
    if (!canGather || !rim.background.isUsable()) return false;
    auto const dy = set(pixelCenter(0, y).y - scene.uniforms.loupeCenter.y);
    auto const fromMiddle = [&](Vec px) HWY_ATTR { return sub(px, set(scene.uniforms.loupeCenter.x)); };
    // What is plain is asked for as many pixels on every machine, since both ways of seeing round in their own way.
    constexpr int block = 16;
    for (int x = begin; x < end; x += block) {
        auto const blockEnd = std::min(x + block, end);
        bool isPlain = true;
        forCenters(x, blockEnd, [&](Vec px, int) HWY_ATTR { isPlain = isPlain && plain.holds(fromMiddle(px), dy); });
        forSeen(x, blockEnd, seen, [&](Vec px) HWY_ATTR { return seeRim(rim, plain, fromMiddle(px), dy, isPlain); });
    }
    return true;
}

}
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace tavaro {

HWY_EXPORT(seeRimRow);

bool seeRim(LensRow const& row, LoupeScene const& scene, BackgroundRows const& background, std::uint8_t* seen) {
    return HWY_DYNAMIC_DISPATCH(seeRimRow)(scene, background, row.y, row.begin, row.end, seen);
}

}
#endif
