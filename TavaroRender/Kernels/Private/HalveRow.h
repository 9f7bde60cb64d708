#pragma once

#include <cstdint>

namespace tavaro {

/// Averages blocks of 2 × 2 pixels of two rows into one row of `outWidth` pixels, rounded to nearest.
void halveEvenRow(std::uint8_t const* upper, std::uint8_t const* lower, std::uint8_t* out, int outWidth);

}
