#include <TavaroRender/Kernels/CameraUniforms.h>
#include <TavaroRender/Kernels/Private/CameraFormula.h>
#include <TavaroRender/Kernels/Private/GradeFormula.h>
#include <TavaroRender/Kernels/Private/PixelStore.h>
#include <TavaroRender/Kernels/Private/Reference.h>
#include <TavaroRender/Kernels/Private/Sampling.h>

namespace tavaro {

namespace {

constexpr Float3 black{0, 0, 0};

/// The kernel for single pixels.
class CameraPixel {
public:
    CameraPixel(CameraUniforms const& uniforms, ImageView camera, ImageView matte, CubeLUT const* lut)
        : u_(uniforms)
        , camera_(camera)
        , matte_(matte)
        , lut_(lut)
        , mapping_(uniforms, camera)
        , isCutOut_(cameraIsCutOut(uniforms, matte)) {}

    Float4 operator()(Float4 pixel, Float2 point) const {
        auto const offset = point - u_.center;
        return isCutOut_ ? cutOut(pixel, offset) : box(pixel, offset);
    }

private:
    Float4 box(Float4 pixel, Float2 offset) const {
        if (u_.shadowOpacity > 0.001f)
            pixel = laidOver(pixel, black, boxShadow(u_, mapping_, offset) * u_.shadowOpacity * u_.opacity);
        auto const distance = sdRoundedBox(offset, mapping_.halfSize, mapping_.radius);
        if (auto const covered = coverage(distance); covered > 0)
            pixel = laidOver(pixel, picture(offset), covered * u_.opacity);
        if (u_.borderWidth > 0.05f && u_.borderColor.w > 0.001f) {
            auto const line = coverage(std::abs(distance) - u_.borderWidth / 2) * u_.borderColor.w * u_.opacity;
            pixel = withAlpha(mix(rgb(pixel), rgb(u_.borderColor), line), pixel.w);
        }
        return pixel;
    }

    Float4 cutOut(Float4 pixel, Float2 offset) const {
        auto const dropped = offset - Float2{0, personShadowDrop(u_)};
        auto const shadow = isInside(dropped) ? personShadow(u_, matteAt(dropped)) : 0.0f;
        auto const person = isInside(offset) ? personAlpha(matteAt(offset)) : 0.0f;
        pixel = laidOver(pixel, black, saturate(shadow) * u_.opacity * (1.0f - person));
        return person > 0 ? laidOver(pixel, picture(offset), person * u_.opacity) : pixel;
    }

    bool isInside(Float2 offset) const {
        return std::abs(offset.x) <= mapping_.halfSize.x && std::abs(offset.y) <= mapping_.halfSize.y;
    }

    float matteAt(Float2 offset) const { return sampleBilinear(matte_, mapping_.uv(mapping_.local(offset))).x; }

    /// The camera's picture, graded.
    Float3 picture(Float2 offset) const {
        auto const local = mapping_.local(offset);
        auto const color = sampleCamera(camera_, mapping_.uv(local), u_.sharpen, sharpeningReach(mapping_.spread));
        return gradedCamera(u_, lut_, color, local);
    }

    CameraUniforms const& u_;
    ImageView camera_;
    ImageView matte_;
    CubeLUT const* lut_;
    CameraMapping mapping_;
    bool isCutOut_;
};

}

CameraMapping::CameraMapping(CameraUniforms const& u, ImageView camera)
    : halfSize(u.halfSize)
    , radius(std::min(u.cornerRadius, std::min(u.halfSize.x, u.halfSize.y)))
    , scale{1, 1}
    , isMirrored(u.mirrored != 0)
    , cropOrigin(u.cropOrigin)
    , cropSize(u.cropSize) {
    auto const width = static_cast<float>(camera.width) * cropSize.x;
    auto const height = static_cast<float>(camera.height) * cropSize.y;
    auto const cameraAspect = width / std::max(height, 1.0f);
    auto const boxAspect = halfSize.x / std::max(halfSize.y, 1.0f);
    if (cameraAspect > boxAspect)
        scale.x = boxAspect / cameraAspect;
    else
        scale.y = cameraAspect / boxAspect;
    spread = width * scale.x / std::max(2.0f * halfSize.x, 1.0f);
}

Float2 CameraMapping::uv(Float2 local) const {
    auto shown = (local - 0.5f) * scale + 0.5f;
    if (isMirrored) shown.x = 1.0f - shown.x;
    return cropOrigin + saturate(shown) * cropSize;
}

float sharpeningReach(float spread) { return std::max(3.0f, spread * 2.0f); }

Float3 sampleCamera(ImageView camera, Float2 uv, float amount, float reach) {
    auto const center = sampleBilinear(camera, uv);
    if (!(amount > 0.001f)) return center;
    auto const dx = reach / static_cast<float>(camera.width);
    auto const dy = reach / static_cast<float>(camera.height);
    auto const north = sampleBilinear(camera, {uv.x, uv.y - dy});
    auto const south = sampleBilinear(camera, {uv.x, uv.y + dy});
    auto const west = sampleBilinear(camera, {uv.x - dx, uv.y});
    auto const east = sampleBilinear(camera, {uv.x + dx, uv.y});
    auto const mean = (north + south + east + west) * 0.25f;
    auto const lowest = min(min(min(north, south), min(east, west)), center);
    auto const highest = max(max(max(north, south), max(east, west)), center);
    // A little overshoot is what makes edges look crisp; more would be a halo.
    auto const slack = (highest - lowest) * 0.08f;
    return max(min(center + (center - mean) * (amount * 2.4f), highest + slack), lowest - slack);
}

float boxShadow(CameraUniforms const& u, CameraMapping const& mapping, Float2 offset) {
    Float2 const fromShadow{offset.x, offset.y - u.halfSize.y * 0.06f};
    auto const distance = sdRoundedBox(fromShadow, mapping.halfSize, mapping.radius);
    auto const shade = 1.0f - smoothstep(-u.halfSize.x * 0.1f, u.halfSize.x * 0.45f, distance);
    return shade * shade;
}

float personAlpha(float matte) { return smoothstep(0.15f, 0.85f, matte); }

float personShadow(CameraUniforms const& u, float matte) { return matte * 0.30f * u.shadowOpacity * 2.0f; }

float personShadowDrop(CameraUniforms const& u) { return u.halfSize.y * 0.035f; }

bool cameraIsVisible(CameraUniforms const& u, ImageView camera) {
    return !camera.isEmpty() && u.halfSize.x > 0 && u.halfSize.y > 0 && u.opacity > 0;
}

bool cameraIsCutOut(CameraUniforms const& u, ImageView matte) { return u.useMatte != 0 && !matte.isEmpty(); }

void cameraOverlayReference(CameraUniforms const& u, ImageView camera, ImageView matte, CubeLUT const* lut,
                            MutableImageView canvas, int rowBegin, int rowEnd) {
    if (!cameraIsVisible(u, camera)) return;
    CameraPixel const pixel(u, camera, matte, lut);
    for (int y = rowBegin; y < rowEnd; ++y) {
        auto* p = canvas.row(y);
        for (int x = 0; x < canvas.width; ++x, p += 4) storePixel(p, pixel(loadPixel(p), pixelCenter(x, y)));
    }
}

}
