#pragma once

#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Kernels/Private/Arithmetic.h>

namespace tavaro {

struct CameraUniforms;
struct CubeLUT;

/// Where the camera's picture lies in its box.
struct CameraMapping {
    CameraMapping(CameraUniforms const& uniforms, ImageView camera);

    Float2 halfSize;
    float radius = 0; // of the box's corners
    Float2 scale;     // of the box's 0…1 space about its middle: the part of the crop that fills the box
    bool isMirrored = false;
    Float2 cropOrigin;
    Float2 cropSize;
    float spread = 0; // camera pixels along one canvas pixel

    /// A point of the box, 0…1 inside it; `offset` is from the box's centre, px.
    Float2 local(Float2 offset) const { return offset / halfSize * 0.5f + 0.5f; }
    /// The point of the camera's picture (normalised) that is shown there.
    Float2 uv(Float2 local) const;
};

/// How far from a sample its neighbours lie that the sharpening compares it with, in texels of the camera's picture.
float sharpeningReach(float spread);

/// The camera's picture at a point (normalised), sharpened by `amount`; `reach` as above.
Float3 sampleCamera(ImageView camera, Float2 uv, float amount, float reach);

/// How dark the box's shadow is at `offset` from the box's centre.
float boxShadow(CameraUniforms const& uniforms, CameraMapping const& mapping, Float2 offset);

/// Of the person, by the matte, and of the person's shadow.
float personAlpha(float matte);
float personShadow(CameraUniforms const& uniforms, float matte);
/// How far below the person the shadow lies.
float personShadowDrop(CameraUniforms const& uniforms);

/// Nothing is drawn without a picture, a box or opacity. `useMatte` counts only when there is a matte.
bool cameraIsVisible(CameraUniforms const& uniforms, ImageView camera);
bool cameraIsCutOut(CameraUniforms const& uniforms, ImageView matte);

}
