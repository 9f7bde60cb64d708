#pragma once

#include <TavaroRender/Kernels/Private/Arithmetic.h>

namespace tavaro {

/// The sRGB transfer curve (IEC 61966-2-1) and its inverse, for one channel.
float toLinear(float encoded);
float toSRGB(float linear);

/// Mixes two encoded colours in linear light, so that a gradient does not go muddy through its midpoint.
Float3 mixLinear(Float3 a, Float3 b, float t);

}
