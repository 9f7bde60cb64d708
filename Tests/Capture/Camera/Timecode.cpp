#include "Timecode.h"

namespace tavaro::timecode {

namespace {

constexpr std::uint64_t mask = 0xffff'ffff'ffff;

std::uint64_t sumOf(std::uint64_t value) {
    std::uint64_t sum = 0x5a;
    for (int shift = 0; shift < 48; shift += 8) sum = (sum * 31 + (value >> shift & 255)) & 255;
    return sum;
}

}

int squareAt(int x, int y) {
    bool const isInside = x < squaresInARow * side && y < squares / squaresInARow * side;
    return isInside ? y / side * squaresInARow + x / side : -1;
}

bool isWhite(std::int64_t microseconds, int square) {
    auto const value = static_cast<std::uint64_t>(microseconds) & mask;
    return ((value | sumOf(value) << 48) >> square & 1) != 0;
}

std::optional<double> read(ImageView picture) {
    if (picture.width < squaresInARow * side || picture.height < squares / squaresInARow * side) return std::nullopt;
    std::uint64_t code = 0;
    for (int square = 0; square < squares; ++square) {
        int const x = square % squaresInARow * side + side / 2, y = square / squaresInARow * side + side / 2;
        if (picture.row(y)[4 * x + 1] > 127) code |= std::uint64_t{1} << square;
    }
    auto const value = code & mask;
    if (value == 0 || sumOf(value) != code >> 48) return std::nullopt;
    return static_cast<double>(value) * 1e-6;
}

}
