#pragma once

#include <TavaroRender/Kernels/Private/Arithmetic.h>

namespace tavaro {

struct CameraUniforms;
struct CubeLUT;

/// Below this the look, the split tone and the vignette are left out.
inline constexpr float leastLook = 0.001f;

/// What linear light is multiplied by: exposure and white balance.
Float3 lightGain(CameraUniforms const& uniforms);

/// The steps that treat each channel alone: light gain, contrast and lift. `gain` is the channel's share of
/// `lightGain`.
float channelGraded(CameraUniforms const& uniforms, float gain, float encoded);

/// Saturation and split tone, which mix the channels.
Float3 withSaturation(CameraUniforms const& uniforms, Float3 color);
Float3 withSplitTone(CameraUniforms const& uniforms, Float3 color);

/// What the vignette leaves of a colour at a point of the box (0…1 inside it).
float vignetteFactor(CameraUniforms const& uniforms, Float2 local);

/// The colour of the camera's picture as the look shows it. `local` is the point of the box, 0…1 inside it; `lut`
/// counts when `useLUT` says so, and may be null.
Float3 gradedCamera(CameraUniforms const& uniforms, CubeLUT const* lut, Float3 color, Float2 local);

}
