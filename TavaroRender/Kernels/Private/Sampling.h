#pragma once

#include <vector>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Kernels/Private/Arithmetic.h>

namespace tavaro {

class ScreenTexture;
struct CompositeUniforms;

/// A normalised coordinate in texels, counted from the centre of the first one. Positions far outside the picture stop
/// just past its edge, where the sample no longer changes; so does what is not a number.
inline float texelPosition(float normalised, int size) {
    auto const limit = static_cast<float>(size);
    auto const position = normalised * limit - 0.5f;
    return position > -1.0f ? std::min(position, limit) : -1.0f;
}

/// Bilinear sample at a normalised point, texel centres at +0.5, clamped to the edge; colours 0…1.
Float3 sampleBilinear(ImageView image, Float2 uv);
/// The same with alpha, all four channels alike.
Float4 samplePixel(ImageView image, Float2 uv);

/// Where a point of the canvas (normalised) lies in an image that fills the canvas and keeps its aspect.
Float2 aspectFillUV(Float2 uv, int imageWidth, int imageHeight, Float2 canvasSize);

/// Reads the recording as one frame needs it: crop and zoom mapping, mip level, sharpening.
class ScreenSampler {
public:
    /// Builds the levels that the frame samples.
    ScreenSampler(CompositeUniforms const& uniforms, ScreenTexture const& screen);

    bool isEmpty() const { return levels_.empty(); }

    /// The mip level for canvas pixels that cover `coverage` recorded pixels: log2, 0 where they cover one or less.
    float level(float coverage) const;

    /// Recorded pixels along the longer side of what one canvas pixel covers.
    float coverage() const { return coverage_; }
    float levelOfFrame() const { return levelOfFrame_; }
    float sharpenAmount() const { return sharpenAmount_; }
    ImageView image(int level) const { return levels_[static_cast<std::size_t>(level)]; }
    int levelCount() const { return static_cast<int>(levels_.size()); }

    /// The point of the recording's crop (0…1 inside it) that the zoom shows at a point of the canvas.
    Float2 cropPoint(Float2 canvasPoint) const;
    /// A point of the crop as a point of the whole recording.
    Float2 textureUV(Float2 cropPoint) const;

    Float3 sample(Float2 uv, float level) const;
    /// Sharpened by an unsharp mask over the four neighbours one texel away; the result stays within the five, so
    /// edges get no halos.
    Float3 sampleSharp(Float2 uv, float amount, float level) const;

private:
    Float2 contentOrigin_, contentSize_, zoomCenter_, cropOrigin_, cropSize_;
    float zoom_ = 1;
    float coverage_ = 1;
    float levelOfFrame_ = 0;
    float sharpenAmount_ = 0;
    std::vector<ImageView> levels_;
};

}
