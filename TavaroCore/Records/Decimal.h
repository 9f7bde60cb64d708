#pragma once

#include <cstdint>
#include <optional>

namespace tavaro {

/// Room that `writeDecimal` needs; it may touch all of it, and never uses more than half.
inline constexpr int decimalRoom = 64;

/// Writes the shortest decimal number that reads back as exactly this double; of several the nearest. Plain notation
/// from 0.00001 to 10²¹, "1.5e-7" beyond. Returns the end of what was written. The value must be finite.
/// Method: R. Giulietti, "The Schubfach way to render doubles", 2021.
char* writeDecimal(char* out, double value);

/// The double nearest to digits × 10^exponent, or nothing in the rare cases that take more than 128 bits to decide.
/// Method: D. Lemire, "Number parsing at a gigabyte per second", 2021, with wider error bounds.
std::optional<double> nearestDouble(std::uint64_t digits, std::int64_t exponent);

}
