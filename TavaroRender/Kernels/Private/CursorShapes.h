#pragma once

#include <array>

#include <TavaroRender/Kernels/Private/Arithmetic.h>

namespace tavaro {

struct CursorUniforms;

/// The arrow in a box of height 1, its tip at the origin.
inline constexpr std::array<Float2, 7> arrowPoints{{
    {0, 0},
    {0, 0.720f},
    {0.190f, 0.553f},
    {0.302f, 0.830f},
    {0.441f, 0.770f},
    {0.331f, 0.498f},
    {0.560f, 0.498f},
}};

/// Outer radius, px, of the round shapes.
float cursorRadius(CursorUniforms const& uniforms);

/// Signed distance, px, from `offset` (relative to the pointer's position) to the edge of the pointer's shape.
float cursorDistance(CursorUniforms const& uniforms, Float2 offset);

/// How often a pointer in motion is drawn along its way: once up to 1.5 px, else 3…16 times.
int cursorTaps(Float2 velocity);

/// Strength of a click effect's own colour at `offset`, before the click colour's alpha; 0 for the spotlight.
float clickStrength(CursorUniforms const& uniforms, Float2 offset);

/// A fully saturated colour; `turn` 0…1 goes once round the wheel.
Float3 hueColor(float turn);

/// The pixel with the click effect, and then the pointer, drawn over it.
Float4 withClick(CursorUniforms const& uniforms, Float4 pixel, Float2 point);
Float4 withCursor(CursorUniforms const& uniforms, Float4 pixel, Float2 point);

}
