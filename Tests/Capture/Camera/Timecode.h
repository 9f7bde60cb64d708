#pragma once

#include <TavaroMedia/Frames/Image.h>

#include <cstdint>
#include <optional>

namespace tavaro::timecode {

/// A moment of the media clock in whole microseconds, as two rows of black and white squares at the top left of a
/// picture: 48 bits and a sum.
inline constexpr int squares = 56;
inline constexpr int squaresInARow = 28;
inline constexpr int side = 16;

/// Which one a pixel is in; −1 for none.
int squareAt(int x, int y);
/// Whether that square is white.
bool isWhite(std::int64_t microseconds, int square);
/// Seconds; none where there is no code.
std::optional<double> read(ImageView picture);

}
