#pragma once

#include <TavaroCore/Values/Geometry.h>

namespace tavaro {

struct DemoProject;

/// What can be known to fail before a frame is drawn. Each throws `PaintError`.

/// The longest film, in seconds, that times are exact for.
inline constexpr double longestFilm = 1e7;

/// Frames of that size can be drawn.
void requireDrawable(Size2 canvas);

/// The project shows a recording or a title card in its `duration` of seconds, and not for ever.
void requireSource(DemoProject const& project, double duration);

}
