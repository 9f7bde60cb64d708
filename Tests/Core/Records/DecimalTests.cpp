#include <TavaroCore/Records/Decimal.h>

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <random>
#include <string>

using namespace tavaro;

namespace {

std::string written(double value) {
    char room[decimalRoom];
    return {room, writeDecimal(room, value)};
}

/// The digits of a number's text, without its zeros at either end.
std::string digitsOf(std::string_view text) {
    std::string digits;
    for (char const c : text.substr(0, text.find('e'))) {
        if (c >= '0' && c <= '9' && (c != '0' || !digits.empty())) digits += c;
    }
    while (!digits.empty() && digits.back() == '0') digits.pop_back();
    return digits;
}

/// Doubles of all kinds: any bits, times, fractions of pixels, the neighbours of powers of two, halves
/// and quarters of large numbers, where ties are, the smallest ones.
double anyDouble(std::mt19937_64& random) {
    auto const bits = random();
    switch (random() % 6) {
    case 0: return std::bit_cast<double>(bits);
    case 1: return static_cast<double>(bits >> 11) * 0x1p-53 * 4000;
    case 2: return static_cast<double>(bits % 4096) / static_cast<double>(1 + (bits >> 40) % 4096);
    case 3: return std::bit_cast<double>(((bits & 0x7FE) << 52) + random() % 5 - 2);
    case 4: return static_cast<double>(bits >> 11) / static_cast<double>(1 << random() % 12);
    default: return std::bit_cast<double>(bits >> (12 + random() % 52));
    }
}

}

TEST(Decimal, isTheShortestAndNearestTextThatReadsBackEqual) {
    std::mt19937_64 random(17);
    for (int i = 0; i < 300'000; ++i) {
        double const value = anyDouble(random);
        if (!std::isfinite(value)) continue;
        auto const text = written(value);
        double back = 0;
        auto const end = std::from_chars(text.data(), text.data() + text.size(), back).ptr;
        ASSERT_EQ(end, text.data() + text.size()) << text;
        ASSERT_EQ(std::bit_cast<std::uint64_t>(back), std::bit_cast<std::uint64_t>(value)) << text;
        char room[64];
        std::string const standard(room, std::to_chars(room, room + 64, value, std::chars_format::scientific).ptr);
        ASSERT_EQ(digitsOf(text), digitsOf(standard)) << text;
        ASSERT_LE(text.size(), decimalRoom / 2);
    }
}

TEST(Decimal, readsAsPeopleWriteNumbers) {
    EXPECT_EQ(written(0), "0");
    EXPECT_EQ(written(-0.0), "-0");
    EXPECT_EQ(written(100'000), "100000");
    EXPECT_EQ(written(12.5), "12.5");
    EXPECT_EQ(written(0.00001), "0.00001");
    EXPECT_EQ(written(0.000001), "1e-6");
    EXPECT_EQ(written(1e20), "100000000000000000000");
    EXPECT_EQ(written(-1.5e300), "-1.5e300");
    EXPECT_EQ(written(5e-324), "5e-324");
}

TEST(Decimal, theNearestDoubleIsFoundOrLeftToOthers) {
    std::mt19937_64 random(23);
    int found = 0;
    for (int i = 0; i < 300'000; ++i) {
        auto const digits = random() >> random() % 64;
        auto const exponent = static_cast<int>(random() % (i % 2 ? 40 : 700)) - (i % 2 ? 25 : 350);
        auto const text = std::to_string(digits) + "e" + std::to_string(exponent);
        double exact = 0;
        auto const code = std::from_chars(text.data(), text.data() + text.size(), exact).ec;
        auto const value = nearestDouble(digits, exponent);
        if (!value) continue;
        ++found;
        ASSERT_EQ(code, std::errc{}) << text;
        ASSERT_EQ(*value, exact) << text;
    }
    EXPECT_GT(found, 250'000);
}
