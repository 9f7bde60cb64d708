#pragma once

#include <TavaroMedia/Frames/Image.h>

namespace tavaro::gallery {

/// Longer side of the canvas that a stored picture is made from, and how many of its pixels make one of the picture's.
inline constexpr int storedCanvas = 400;
inline constexpr int storedReduction = 2;
/// Colours are stored in steps of this, so that gradients take a few kilobytes.
inline constexpr int storedStep = 8;

/// Means of `storedReduction` × `storedReduction` pixels, over black and white checks where the canvas lets through.
Image reduced(ImageView canvas);

/// The same, in the colours of a stored picture.
Image coarsened(ImageView picture);

struct PictureDifference {
    int largest = 0;
    double mean = 0;
};
/// Of the colours of two pictures of one size.
PictureDifference pictureDifference(ImageView a, ImageView b);

/// Side by side: what was stored, what is drawn, and how they differ, eight times as strong.
Image comparison(ImageView stored, ImageView drawn);

}
