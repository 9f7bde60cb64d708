#include <TavaroCore/Records/Decimal.h>

#include <TavaroCore/Records/Private/PowersOfTen.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

namespace tavaro {

namespace {

constexpr int significandBits = 52;
constexpr int exponentBias = 1075; // of the significand as a whole number
constexpr std::uint64_t hiddenBit = std::uint64_t{1} << significandBits;

/// digits × 10^exponent
struct Decimal {
    std::uint64_t digits;
    int exponent;
};

/// The upper 64 bits of power × factor, with the lowest bit telling that something is lost below.
std::uint64_t roundToOdd(decimal::Power power, std::uint64_t factor) {
    using Wide = unsigned __int128;
    auto const low = static_cast<Wide>(power.low) * factor;
    auto const high = static_cast<Wide>(power.high) * factor + static_cast<std::uint64_t>(low >> 64);
    return static_cast<std::uint64_t>(high >> 64) | (static_cast<std::uint64_t>(high) > 1);
}

constexpr int floorLog10OfPowerOfTwo(int q) { return (q * 1262611) >> 22; }
constexpr int floorLog10OfThreeQuarters(int q) { return (q * 1262611 - 524031) >> 22; } // of 3/4 × 2^q

Decimal shortest(double value) {
    auto const bits = std::bit_cast<std::uint64_t>(value);
    auto const fraction = bits & (hiddenBit - 1);
    auto const biased = static_cast<int>(bits >> significandBits & 0x7FF);
    auto const c = biased ? fraction | hiddenBit : fraction;
    int const q = (biased ? biased : 1) - exponentBias;

    // The numbers that read as this one reach half way to its neighbours; the one below a power of two is nearer.
    bool const lowerIsNearer = fraction == 0 && biased > 1;
    bool const includesEnds = c % 2 == 0;
    int const k = lowerIsNearer ? floorLog10OfThreeQuarters(q) : floorLog10OfPowerOfTwo(q);
    int const h = q + decimal::floorLog2OfPower(-k) + 1;
    auto const power = decimal::powerOfTen(-k);
    auto const lower = roundToOdd(power, (4 * c - 2 + lowerIsNearer) << h) + !includesEnds;
    auto const middle = roundToOdd(power, 4 * c << h);
    auto const upper = roundToOdd(power, (4 * c + 2) << h) - !includesEnds;

    auto const s = middle / 4;
    auto const half = 4 * s + 2;
    bool const belowFits = lower <= 4 * s, aboveFits = 4 * s + 4 <= upper;
    bool const nearestIsAbove = middle > half || (middle == half && s % 2);
    auto const near = s + (belowFits != aboveFits ? aboveFits : nearestIsAbove);
    // Half of all numbers need one digit less; which half is anybody's guess, the processor's too, so no branches.
    auto const tens = s / 10;
    bool const tenBelowFits = lower <= 40 * tens, tenAboveFits = 40 * tens + 40 <= upper;
    bool const tenFits = (tenBelowFits != tenAboveFits) & (s >= 10);
    return {tenFits ? tens + tenAboveFits : near, k + tenFits};
}

/// The eight digits of a number, one a byte, the first in the lowest: halves it again and again, all parts at once.
std::uint64_t eightDigits(std::uint32_t value) {
    std::uint64_t const fours = value / 10'000 | static_cast<std::uint64_t>(value % 10'000) << 32;
    std::uint64_t const hundreds = (fours * 10486 >> 20) & 0x0000'007F'0000'007F;
    std::uint64_t const twos = hundreds + ((fours - 100 * hundreds) << 16);
    std::uint64_t const tens = (twos * 103 >> 10) & 0x000F'000F'000F'000F;
    return tens + ((twos - 10 * tens) << 8);
}

void store(char* out, std::uint64_t digits) {
    static_assert(std::endian::native == std::endian::little);
    auto const text = digits | 0x3030'3030'3030'3030;
    std::memcpy(out, &text, sizeof text);
}

constexpr std::uint64_t sixteenDigits = 1'000'000'000'000'000;
constexpr std::uint64_t seventeenDigits = 10 * sixteenDigits;

/// Writes the digits without zeros at their end and returns how many; `number` then stands for just those.
int writeDigits(char* out, Decimal& number) {
    while (number.digits < sixteenDigits) number.digits *= 10, --number.exponent; // near the smallest numbers only
    bool const hasOneMore = number.digits >= seventeenDigits;
    *out = static_cast<char>('0' + number.digits / seventeenDigits);
    out += hasOneMore;
    auto const rest = number.digits % seventeenDigits;
    auto const high = eightDigits(static_cast<std::uint32_t>(rest / 100'000'000));
    auto const low = eightDigits(static_cast<std::uint32_t>(rest % 100'000'000));
    store(out, high);
    store(out + 8, low);
    int const zeros = low ? std::countl_zero(low) / 8 : 8 + std::countl_zero(high) / 8;
    number.exponent += zeros;
    return 16 + hasOneMore - zeros;
}

/// Characters on their way to another place. Always as many, whatever part of them is meant: a move of a fixed length
/// is an instruction or two.
struct Moved {
    std::array<char, 24> characters;

    explicit Moved(char const* from) { std::memcpy(characters.data(), from, characters.size()); }
    void to(char* out) const { std::memcpy(out, characters.data(), characters.size()); }
};

/// "1.5e-7" from "x15"; the decimal point belongs behind that many digits.
char* finishScientific(char* out, int count, int point) {
    out[0] = out[1];
    out[1] = '.';
    out += count > 1 ? count + 1 : 1;
    *out++ = 'e';
    return std::to_chars(out, out + 5, point - 1).ptr;
}

}

char* writeDecimal(char* out, double value) {
    if (std::signbit(value)) {
        *out++ = '-';
        value = -value;
    }
    if (value < 0x1p53 && value == static_cast<double>(static_cast<std::int64_t>(value)))
        return std::to_chars(out, out + decimalRoom - 1, static_cast<std::int64_t>(value)).ptr;
    auto number = shortest(value);
    int const count = writeDigits(out + 1, number); // leaves a place in front
    int const point = count + number.exponent;      // digits before the decimal point
    if (point > 21 || point < -4) return finishScientific(out, count, point);
    Moved const digits(out + 1);
    if (point <= 0) {
        std::memcpy(out, "0.0000", 6);
        digits.to(out + 2 - point);
        return out + 2 - point + count;
    }
    Moved const fraction(out + 1 + point);
    digits.to(out);
    if (point >= count) {
        std::memset(out + count, '0', static_cast<std::size_t>(point - count));
        return out + point;
    }
    out[point] = '.';
    fraction.to(out + point + 1);
    return out + count + 1;
}

std::optional<double> nearestDouble(std::uint64_t digits, std::int64_t exponent) {
    if (digits == 0) return 0.0;
    if (exponent < decimal::leastPower || exponent > 308) return std::nullopt;
    auto const k = static_cast<int>(exponent);
    // A quotient or a product of two exact numbers is rounded once, so it is right.
    constexpr double small[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    if (digits < std::uint64_t{1} << 53 && k >= -22 && k <= 22) {
        auto const whole = static_cast<double>(digits);
        return k < 0 ? whole / small[-k] : whole * small[k];
    }
    using Wide = unsigned __int128;
    int const shift = std::countl_zero(digits);
    auto const power = decimal::powerOfTen(k);
    auto const factor = digits << shift;
    auto const product = static_cast<Wide>(power.high) * factor +
                         static_cast<std::uint64_t>(static_cast<Wide>(power.low) * factor >> 64);
    // The true product lies at most 2 below this one in the last place, as the power is rounded up by less than one.
    int const leading = static_cast<int>(product >> 127); // 1 when the product has 128 bits, else 127
    int const surplus = 64 + 10 + leading;                // bits below the 53 of the result
    auto const below = product & ((Wide{1} << surplus) - 1);
    auto const half = Wide{1} << (surplus - 1);
    auto const isNear = [&](Wide border) { return below + 4 > border && below < border + 4; };
    if (isNear(half) || below < 4) return std::nullopt;
    auto significand = static_cast<std::uint64_t>(product >> surplus) + (below > half);
    // digits × 10^k = product × 2^(⌊log₂ 10^k⌋ − 63 − shift), as the product leaves out 64 of its bits
    int binary = surplus + decimal::floorLog2OfPower(k) - 63 - shift;
    if (significand == hiddenBit << 1) significand >>= 1, ++binary;
    int const biased = binary + exponentBias;
    if (biased <= 0 || biased >= 0x7FF) return std::nullopt; // the ends of the range
    return std::bit_cast<double>(static_cast<std::uint64_t>(biased) << significandBits |
                                 (significand & (hiddenBit - 1)));
}

}
