#pragma once

#include <TavaroCore/Values/Geometry.h>

namespace tavaro {

/// The largest size for a picture of a film with that canvas in so much room, in pixels; never larger than the canvas.
/// Its rows can be shown as they are, without a copy: the width is divisible by 16. Nothing (0 × 0) where there is no
/// room for a picture.
Size2 pictureSize(Size2 canvas, Size2 room);

/// The same picture with about one in `divisor` pixels a side.
Size2 coarserSize(Size2 size, int divisor);

}
