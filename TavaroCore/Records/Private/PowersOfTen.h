#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// Powers of ten to 128 bits, worked out by the compiler.
namespace tavaro::decimal {

/// The upper 128 bits of a power of ten, rounded up where they are not all of it; the highest bit is set.
struct Power {
    std::uint64_t high = 0;
    std::uint64_t low = 0;
};

inline constexpr int leastPower = -292;
inline constexpr int greatestPower = 324;

/// ⌊log₂ 10^k⌋, right for |k| ≤ 1233.
constexpr int floorLog2OfPower(int k) { return (k * 1741647) >> 19; }

namespace detail {

using Limbs = std::array<std::uint64_t, 18>; // least significant first

constexpr int highestLimb(Limbs const& number) {
    int top = static_cast<int>(number.size()) - 1;
    while (number[static_cast<std::size_t>(top)] == 0) --top;
    return top;
}

constexpr Power leading(Limbs const& number, bool isExact) {
    int const top = highestLimb(number);
    auto const limb = [&](int i) { return i < 0 ? 0 : number[static_cast<std::size_t>(i)]; };
    int shift = 0;
    while (!(limb(top) << shift >> 63)) ++shift;
    auto const shifted = [&](int i) { return shift ? limb(i) << shift | limb(i - 1) >> (64 - shift) : limb(i); };
    Power power{shifted(top), shifted(top - 1)};
    bool hasRest = !isExact || (shift && limb(top - 2) << shift);
    if (!shift) hasRest = hasRest || limb(top - 2);
    for (int i = top - 3; i >= 0; --i) hasRest = hasRest || limb(i);
    if (hasRest && ++power.low == 0) ++power.high;
    return power;
}

constexpr auto makePowers() {
    std::array<Power, greatestPower - leastPower + 1> powers{};
    Limbs number{1};
    for (int k = 0; k <= greatestPower; ++k) {
        powers[static_cast<std::size_t>(k - leastPower)] = leading(number, true);
        std::uint64_t carry = 0;
        for (int i = 0; i < static_cast<int>(number.size()); ++i) {
            auto const product = static_cast<unsigned __int128>(number[static_cast<std::size_t>(i)]) * 10 + carry;
            number[static_cast<std::size_t>(i)] = static_cast<std::uint64_t>(product);
            carry = static_cast<std::uint64_t>(product >> 64);
        }
    }
    // Dividing a power of two by ten again and again, rounding down each time, gives the quotient by 10^k rounded down.
    number = {};
    number.back() = std::uint64_t{1} << 63;
    for (int k = -1; k >= leastPower; --k) {
        std::uint64_t rest = 0;
        for (int i = static_cast<int>(number.size()) - 1; i >= 0; --i) {
            auto const part = static_cast<unsigned __int128>(rest) << 64 | number[static_cast<std::size_t>(i)];
            number[static_cast<std::size_t>(i)] = static_cast<std::uint64_t>(part / 10);
            rest = static_cast<std::uint64_t>(part % 10);
        }
        powers[static_cast<std::size_t>(k - leastPower)] = leading(number, false);
    }
    return powers;
}

inline constexpr auto powers = makePowers();

}

/// 10^k = `powerOfTen(k)` × 2^(floorLog2OfPower(k) − 127).
constexpr Power powerOfTen(int k) { return detail::powers[static_cast<std::size_t>(k - leastPower)]; }

static_assert(powerOfTen(0).high == 0x8000'0000'0000'0000 && powerOfTen(0).low == 0);
static_assert(powerOfTen(1).high == 0xA000'0000'0000'0000 && powerOfTen(1).low == 0);
static_assert(powerOfTen(-1).high == 0xCCCC'CCCC'CCCC'CCCC && powerOfTen(-1).low == 0xCCCC'CCCC'CCCC'CCCD);

}
