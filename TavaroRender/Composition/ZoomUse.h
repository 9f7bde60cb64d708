#pragma once

#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Values/Geometry.h>

namespace tavaro {

/// Whether a frame is drawn through the zooms, or as if there were none.
enum class ZoomUse { zoomed, unzoomed };

/// What a zoom that is there at a moment shows while it holds, of the cropped source.
struct ZoomWindow {
    UUID id;
    NormalizedRect rect;

    bool operator==(ZoomWindow const&) const = default;
};

}
