#pragma once

#include <TavaroMedia/Frames/Image.h>

namespace tavaro {

/// The opaque picture at a smaller size: each pixel is the mean of the area that it stands for.
Image downscaled(ImageView const& image, int width, int height);

}
