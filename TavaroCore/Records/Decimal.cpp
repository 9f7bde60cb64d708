#include <TavaroCore/Records/Decimal.h>

#include <TavaroCore/Records/Private/PowersOfTen.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

namespace tavaro {

namespace {

using Wide = unsigned __int128;

constexpr int significandBits = 52;
constexpr int exponentBias = 1075; // of the significand as a whole number
constexpr std::uint64_t hiddenBit = std::uint64_t{1} << significandBits;

/// Sixteen digits and one more behind them; the decimal point belongs behind the first `point` of them.
struct Decimal {
    std::uint64_t leading;
    std::uint64_t last;
    int point;
};

constexpr std::uint64_t leastOfSixteen = 1'000'000'000'000'000;

/// The upper 64 bits of power × factor, with the lowest bit telling that something is lost below.
std::uint64_t roundToOdd(decimal::Power power, std::uint64_t factor) {
    auto const low = static_cast<Wide>(power.low) * factor;
    auto const high = static_cast<Wide>(power.high) * factor + static_cast<std::uint64_t>(low >> 64);
    return static_cast<std::uint64_t>(high >> 64) | (static_cast<std::uint64_t>(high) > 1);
}

constexpr int floorLog10OfPowerOfTwo(int q) { return (q * 1262611) >> 22; }
constexpr int floorLog10OfThreeQuarters(int q) { return (q * 1262611 - 524031) >> 22; } // of 3/4 × 2^q

/// digits × 10^exponent; at most seventeen digits.
Decimal settled(std::uint64_t digits, int exponent) {
    while (digits < 10 * leastOfSixteen) digits *= 10, --exponent;
    return {digits / 10, digits % 10, exponent + 17};
}

/// Of the value c × 2^q.
Decimal shortestExactly(std::uint64_t c, int q, bool lowerIsNearer) {
    // The numbers that read as this one reach half way to its neighbours; the one below a power of two is nearer.
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
    auto const tens = s / 10;
    bool const tenBelowFits = lower <= 40 * tens, tenAboveFits = 40 * tens + 40 <= upper;
    bool const tenFits = (tenBelowFits != tenAboveFits) & (s >= 10);
    return tenFits ? settled(tens + tenAboveFits, k + 1) : settled(near, k);
}

/// One of two numbers, without the branch that a compiler may make of `?:`. Which way a number rounds and whether one
/// digit less will do is anybody's guess, the processor's too.
constexpr std::uint64_t chosen(bool first, std::uint64_t ifSo, std::uint64_t ifNot) {
    return ifNot ^ ((ifSo ^ ifNot) & -static_cast<std::uint64_t>(first));
}

/// Of the value c × 2^q, c of 53 bits, q ≤ 0, its neighbours equally near: from one product, cut off after 64 bits of
/// its fraction. None in the rare cases that the bits behind them decide.
std::optional<Decimal> shortestAtOnce(std::uint64_t c, int q) {
    int const k = floorLog10OfPowerOfTwo(q) + 1;
    int const h = q + decimal::floorLog2OfPower(-k) + 1; // −3…0
    constexpr int surplus = 11;                          // bits of the product's upper half below the fraction
    auto const power = decimal::powerOfTen(-k);
    auto const factor = c << (h + surplus);
    auto const product = static_cast<Wide>(power.high) * factor +
                         static_cast<std::uint64_t>(static_cast<Wide>(power.low) * factor >> 64);
    auto whole = static_cast<std::uint64_t>(product >> 64 >> surplus);
    auto const fraction = static_cast<std::uint64_t>(product >> surplus);
    auto const reach = power.high >> (1 - h); // half way to a neighbour; less than half of one
    auto const tenfold = static_cast<Wide>(fraction) * 10;
    auto const rest = static_cast<std::uint64_t>(tenfold);

    // What is cut off and the power's own error make the fraction and the reach wrong by less than 3 in the last place.
    constexpr std::uint64_t margin = 32, half = std::uint64_t{1} << 63;
    auto const isNear = [](std::uint64_t a, std::uint64_t b) { return a - b + margin < 2 * margin; };
    if (isNear(fraction, reach) | isNear(~fraction, reach) | isNear(rest, half)) return std::nullopt;

    bool const belowFits = fraction < reach, aboveFits = ~fraction < reach;
    auto const nearest = static_cast<std::uint64_t>(tenfold >> 64) + (rest >= half);
    auto const digit = chosen(belowFits | aboveFits, 0, nearest);
    whole += aboveFits;
    bool const hasFifteen = whole < leastOfSixteen;
    return Decimal{.leading = chosen(hasFifteen, 10 * whole + digit, whole),
                   .last = chosen(hasFifteen, 0, digit),
                   .point = k + 16 - hasFifteen};
}

Decimal shortest(double value) {
    auto const bits = std::bit_cast<std::uint64_t>(value);
    auto const fraction = bits & (hiddenBit - 1);
    auto const biased = static_cast<int>(bits >> significandBits & 0x7FF);
    if (fraction != 0 && biased > 0 && biased <= exponentBias) {
        if (auto const decimal = shortestAtOnce(fraction | hiddenBit, biased - exponentBias)) return *decimal;
    }
    auto const c = biased ? fraction | hiddenBit : fraction;
    return shortestExactly(c, (biased ? biased : 1) - exponentBias, fraction == 0 && biased > 1);
}

/// The eight digits of a number, one a byte, the first in the lowest: halves it again and again, all parts at once.
std::uint64_t eightDigits(std::uint32_t value) {
    std::uint64_t const fours = value / 10'000 | static_cast<std::uint64_t>(value % 10'000) << 32;
    std::uint64_t const hundreds = (fours * 10486 >> 20) & 0x0000'007F'0000'007F;
    std::uint64_t const twos = hundreds + ((fours - 100 * hundreds) << 16);
    std::uint64_t const tens = (twos * 103 >> 10) & 0x000F'000F'000F'000F;
    return tens + ((twos - 10 * tens) << 8);
}

/// The same as characters. They stay in registers until their places are known: what was just stored in parts would
/// have to be waited for.
struct Digits {
    Wide leading; // the first in the lowest byte
    char last;
    int count; // without zeros at the end
    int point; // negative: zeros behind it
};

Digits digitsOf(Decimal const& number) {
    constexpr std::uint64_t eight = 100'000'000, zeros = 0x3030'3030'3030'3030;
    auto const high = eightDigits(static_cast<std::uint32_t>(number.leading / eight));
    auto const low = eightDigits(static_cast<std::uint32_t>(number.leading % eight));
    int const cut = low ? std::countl_zero(low) / 8 : 8 + std::countl_zero(high) / 8;
    return {.leading = static_cast<Wide>(low | zeros) << 64 | (high | zeros),
            .last = static_cast<char>('0' + number.last),
            .count = static_cast<int>(chosen(number.last != 0, 17, static_cast<std::uint64_t>(16 - cut))),
            .point = number.point};
}

void store(char* out, Wide text) {
    static_assert(std::endian::native == std::endian::little);
    std::memcpy(out, &text, sizeof text);
}

char* writeScientific(char* out, Digits const& digits) {
    store(out + 1, digits.leading);
    out[0] = out[1];
    out[1] = '.';
    out[17] = digits.last;
    out += digits.count > 1 ? digits.count + 1 : 1;
    *out++ = 'e';
    return std::to_chars(out, out + 5, digits.point - 1).ptr;
}

/// Whole, with as many zeros behind the digits as it takes.
char* writeLarge(char* out, Digits const& digits) {
    store(out, digits.leading);
    out[16] = digits.last;
    std::memset(out + digits.count, '0', static_cast<std::size_t>(digits.point - digits.count));
    return out + digits.point;
}

/// Below one.
char* writeSmall(char* out, Digits const& digits) {
    std::memcpy(out, "0.0000", 6);
    out += 2 - digits.point;
    store(out, digits.leading);
    out[16] = digits.last;
    return out + digits.count;
}

/// With digits on both sides of the point, of which at most sixteen are before it.
char* writeMixed(char* out, Digits const& digits) {
    store(out, digits.leading);
    out[digits.point] = '.';
    store(out + digits.point + 1, digits.leading >> 8 * (digits.point - 1) >> 8);
    out[17] = digits.last;
    return out + digits.count + 1;
}

}

char* writeDecimal(char* out, double value) {
    constexpr double leastWhole = 0x1p53; // from here on, no number has a fraction
    if (std::signbit(value)) {
        *out++ = '-';
        value = -value;
    }
    bool const isLarge = value >= leastWhole;
    if (!isLarge && value == static_cast<double>(static_cast<std::int64_t>(value)))
        return std::to_chars(out, out + decimalRoom - 1, static_cast<std::int64_t>(value)).ptr;
    auto const digits = digitsOf(shortest(value));
    if (digits.point > 21 || digits.point < -4) return writeScientific(out, digits);
    if (isLarge) return writeLarge(out, digits);
    return digits.point <= 0 ? writeSmall(out, digits) : writeMixed(out, digits);
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
