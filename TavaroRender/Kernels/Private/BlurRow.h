#pragma once

#include <cstdint>

namespace tavaro {

/// Adds the channels of `count` pixels to sums, and takes those of others away.
void moveSums(std::int32_t* sums, std::uint8_t const* added, std::uint8_t const* removed, int count);

/// The means of `count` pixels along a row. `sums` holds the columns' sums, four channels each, beginning `reach`
/// columns before the first pixel; every second column within `reach` counts.
void meanRow(std::int32_t const* sums, int reach, std::uint8_t* out, int count);

}
