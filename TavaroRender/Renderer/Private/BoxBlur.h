#pragma once

#include <TavaroMedia/Frames/Image.h>

namespace tavaro {

/// Blurs in place by three box filters one after the other, close to a Gaussian of that radius; the edge pixels go on
/// past the edges. Time does not depend on the radius.
void boxBlur(Image& image, int radius);

}
