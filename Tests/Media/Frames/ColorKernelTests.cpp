#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include <TavaroMedia/Frames/Private/ColorKernels.h>

namespace tavaro {
namespace {

// The definitions, in plain doubles: ITU-R BT.709 and its relatives, 8-bit quantization.
struct Reference {
    LumaWeights weights;
    SampleRange range;

    double green() const { return 1 - weights.red - weights.blue; }
    bool isLimited() const { return range == SampleRange::limited; }

    std::array<double, 3> rgb(double y, double cb, double cr) const {
        auto const luma = isLimited() ? (y - 16) / 219 : y / 255;
        auto const b = (cb - 128) / (isLimited() ? 224 : 255);
        auto const r = (cr - 128) / (isLimited() ? 224 : 255);
        auto const red = luma + 2 * (1 - weights.red) * r;
        auto const blue = luma + 2 * (1 - weights.blue) * b;
        auto const grn = (luma - weights.red * red - weights.blue * blue) / green();
        return {red * 255, grn * 255, blue * 255};
    }
    double luma(std::array<double, 3> const& rgb) const {
        return weights.red * rgb[0] + green() * rgb[1] + weights.blue * rgb[2];
    }
    double y(std::array<double, 3> const& rgb) const { return 16 + luma(rgb) * 219 / 255; }
    double cb(std::array<double, 3> const& rgb) const {
        return 128 + (rgb[2] - luma(rgb)) / (2 * (1 - weights.blue)) * 224 / 255;
    }
    double cr(std::array<double, 3> const& rgb) const {
        return 128 + (rgb[0] - luma(rgb)) / (2 * (1 - weights.red)) * 224 / 255;
    }
};

// Random, but often at the ends of the range, where arithmetic overflows.
std::vector<std::uint8_t> samples(std::mt19937& random, std::size_t count) {
    std::vector<std::uint8_t> result(count);
    for (auto& sample : result) {
        auto const kind = random() % 4;
        sample = static_cast<std::uint8_t>(kind == 0 ? 0 : kind == 1 ? 255 : random());
    }
    return result;
}

constexpr std::array widths = {2, 4, 6, 14, 30, 62, 64, 66, 126, 128, 130, 320, 1366};
constexpr std::uint8_t guard = 0xA5;

TEST(ColorKernels, a420RowBecomesTheColoursOfItsStandardWithinOneLevel) {
    for (auto const weights : {LumaWeights{0.2126, 0.0722}, LumaWeights{0.299, 0.114}, LumaWeights{0.2627, 0.0593}}) {
        for (auto const range : {SampleRange::limited, SampleRange::full}) {
            for (auto width : widths) {
                for (auto const odd : {0, 1}) {
                    width -= odd;
                    std::mt19937 random(static_cast<unsigned>(width));
                    SCOPED_TRACE(width);
                    auto const half = static_cast<std::size_t>(width + 1) / 2;
                    auto const y = samples(random, static_cast<std::size_t>(width));
                    auto const cb0 = samples(random, half), cb1 = samples(random, half);
                    auto const cr0 = samples(random, half), cr1 = samples(random, half);
                    std::vector<std::uint8_t> rgba(static_cast<std::size_t>(width) * 4 + 64, guard);
                    rowFromYCbCr420(y.data(), {cb0.data(), cb1.data(), cr0.data(), cr1.data()}, width,
                                    FromYCbCr(weights, range), rgba.data());
                    Reference const reference{weights, range};
                    auto const chroma = [&](auto const& near, auto const& far, int x) {
                        auto const at = [&](std::size_t i) {
                            i = std::min(i, half - 1);
                            return (3 * near[i] + far[i]) / 4.0;
                        };
                        auto const i = static_cast<std::size_t>(x / 2);
                        return x % 2 == 0 ? at(i) : (at(i) + at(i + 1)) / 2;
                    };
                    for (int x = 0; x < width; ++x) {
                        auto const expected =
                            reference.rgb(y[static_cast<std::size_t>(x)], chroma(cb0, cb1, x), chroma(cr0, cr1, x));
                        auto const* pixel = rgba.data() + 4 * x;
                        for (std::size_t c = 0; c < 3; ++c)
                            ASSERT_NEAR(pixel[c], std::round(std::clamp(expected[c], 0.0, 255.0)), 1) << x << ", " << c;
                        ASSERT_EQ(pixel[3], 255);
                    }
                    for (auto i = static_cast<std::size_t>(width) * 4; i < rgba.size(); ++i) ASSERT_EQ(rgba[i], guard);
                }
            }
        }
    }
}

std::array<double, 3> pixelOf(std::uint8_t const* row, int x, bool isBGRA) {
    auto const* pixel = row + 4 * std::max(x, 0);
    if (isBGRA) return {double(pixel[2]), double(pixel[1]), double(pixel[0])};
    return {double(pixel[0]), double(pixel[1]), double(pixel[2])};
}

TEST(ColorKernels, rowsForAnEncoderHaveTheColoursOfBT709WithinOneLevel) {
    Reference const reference{{0.2126, 0.0722}, SampleRange::limited};
    for (auto const width : widths) {
        for (auto const isBGRA : {false, true}) {
            std::mt19937 random(static_cast<unsigned>(width));
            SCOPED_TRACE(width);
            auto const count = static_cast<std::size_t>(width);
            std::vector<std::uint8_t> const pixels[2] = {samples(random, 4 * count), samples(random, 4 * count)};
            std::uint8_t const* const rows[2] = {pixels[0].data(), pixels[1].data()};
            std::vector<std::uint8_t> y0(count + 64, guard), y1 = y0, cb(count / 2 + 64, guard), cr = cb;
            rowsToYCbCr420(rows, isBGRA, width, {{y0.data(), y1.data()}, cb.data(), cr.data()});
            std::vector<std::uint16_t> y10(count + 64, guard), cb10(count / 2 + 64, guard), cr10 = cb10;
            rowToYCbCr422(rows[0], isBGRA, width, {y10.data(), cb10.data(), cr10.data()});
            for (int x = 0; x < width; ++x) {
                auto const i = static_cast<std::size_t>(x);
                ASSERT_NEAR(y0[i], std::round(reference.y(pixelOf(rows[0], x, isBGRA))), 1) << x;
                ASSERT_NEAR(y1[i], std::round(reference.y(pixelOf(rows[1], x, isBGRA))), 1) << x;
                ASSERT_NEAR(y10[i], std::round(4 * reference.y(pixelOf(rows[0], x, isBGRA))), 1) << x;
                if (x % 2 == 1) continue;
                auto const around = [&](std::uint8_t const* row, auto value) {
                    return (value(pixelOf(row, x - 1, isBGRA)) + 2 * value(pixelOf(row, x, isBGRA)) +
                            value(pixelOf(row, x + 1, isBGRA))) /
                           4;
                };
                auto const cbAt = [&](auto const& pixel) { return reference.cb(pixel); };
                auto const crAt = [&](auto const& pixel) { return reference.cr(pixel); };
                ASSERT_NEAR(cb[i / 2], std::round((around(rows[0], cbAt) + around(rows[1], cbAt)) / 2), 1) << x;
                ASSERT_NEAR(cr[i / 2], std::round((around(rows[0], crAt) + around(rows[1], crAt)) / 2), 1) << x;
                ASSERT_NEAR(cb10[i / 2], std::round(4 * around(rows[0], cbAt)), 1) << x;
                ASSERT_NEAR(cr10[i / 2], std::round(4 * around(rows[0], crAt)), 1) << x;
            }
            for (std::size_t i = 0; i < 64; ++i) {
                ASSERT_TRUE(y0[count + i] == guard && y1[count + i] == guard && y10[count + i] == guard);
                ASSERT_TRUE(cb[count / 2 + i] == guard && cr[count / 2 + i] == guard);
                ASSERT_TRUE(cb10[count / 2 + i] == guard && cr10[count / 2 + i] == guard);
            }
        }
    }
}

// The definition: to red, green and blue by one standard, and back by the other.
TEST(ColorKernels, rowsOfAnotherStandardHaveTheColoursOfBT709WithinOneLevel) {
    Reference const film{{0.2126, 0.0722}, SampleRange::limited};
    for (auto const weights : {LumaWeights{0.2126, 0.0722}, LumaWeights{0.299, 0.114}, LumaWeights{0.2627, 0.0593}}) {
        for (auto const range : {SampleRange::limited, SampleRange::full}) {
            Reference const camera{weights, range};
            for (auto const width : widths) {
                std::mt19937 random(static_cast<unsigned>(width));
                SCOPED_TRACE(width);
                auto const count = static_cast<std::size_t>(width), half = count / 2;
                std::vector<std::uint8_t> const luma[2] = {samples(random, count), samples(random, count)};
                auto const cb = samples(random, half), cr = samples(random, half);
                std::vector<std::uint8_t> y0(count + 64, guard), y1 = y0, madeCb(half + 64, guard), madeCr = madeCb;
                rowsToBT709({{luma[0].data(), luma[1].data()}, cb.data(), cr.data()}, width, ToBT709(weights, range),
                            {{y0.data(), y1.data()}, madeCb.data(), madeCr.data()});
                auto const chroma = [&](auto const& plane, std::size_t x) {
                    auto const next = std::min(x / 2 + 1, half - 1);
                    return x % 2 == 0 ? plane[x / 2] : (plane[x / 2] + plane[next]) / 2.0;
                };
                for (std::size_t x = 0; x < count; ++x) {
                    auto const expect = [&](std::uint8_t made, double wanted, double most) {
                        ASSERT_NEAR(made, std::round(std::clamp(wanted, 16.0, most)), 1) << x;
                    };
                    auto const colors = [&](std::uint8_t y) { return camera.rgb(y, chroma(cb, x), chroma(cr, x)); };
                    expect(y0[x], film.y(colors(luma[0][x])), 235);
                    expect(y1[x], film.y(colors(luma[1][x])), 235);
                    if (x % 2 == 1) continue;
                    expect(madeCb[x / 2], film.cb(colors(100)), 240);
                    expect(madeCr[x / 2], film.cr(colors(100)), 240);
                }
                for (std::size_t i = 0; i < 64; ++i)
                    ASSERT_TRUE(y0[count + i] == guard && y1[count + i] == guard && madeCb[half + i] == guard &&
                                madeCr[half + i] == guard);
            }
        }
    }
}

TEST(ColorKernels, theSamplesOf422AreTakenApartAtAnyWidth) {
    std::mt19937 random(3);
    for (auto const order : {Order422::lumaFirst, Order422::chromaFirst}) {
        for (std::size_t width = 1; width < 300; width += width < 140 ? 1 : 37) {
            std::size_t const pairs = (width + 1) / 2;
            std::vector<std::uint8_t> const upper = samples(random, 4 * pairs), lower = samples(random, 4 * pairs);
            std::uint8_t const* const rows[2] = {upper.data(), lower.data()};
            std::vector<std::uint8_t> y0(width + 64, guard), y1 = y0, cb(pairs + 64, guard), cr = cb;
            rowsFrom422(rows, order, static_cast<int>(width), {{y0.data(), y1.data()}, cb.data(), cr.data()});
            std::size_t const lumaAt = order == Order422::lumaFirst ? 0 : 1;
            for (std::size_t x = 0; x < width; ++x)
                ASSERT_TRUE(y0[x] == upper[2 * x + lumaAt] && y1[x] == lower[2 * x + lumaAt]) << width << ", " << x;
            for (std::size_t i = 0; i < pairs; ++i) {
                auto const mean = [&](std::size_t at) { return (upper[4 * i + at] + lower[4 * i + at] + 1) / 2; };
                ASSERT_TRUE(cb[i] == mean(1 - lumaAt) && cr[i] == mean(3 - lumaAt)) << width << ", " << i;
            }
            ASSERT_TRUE(y0[width] == guard && y1[width] == guard && cb[pairs] == guard && cr[pairs] == guard) << width;
        }
    }
}

TEST(ColorKernels, greyTextComesBackAsItWas) {
    constexpr int width = 254;
    std::mt19937 random(5);
    std::vector<std::uint8_t> text(4 * width);
    for (int x = 0; x < width; ++x) {
        auto const grey = static_cast<std::uint8_t>(x < 16 ? 17 * x : random());
        std::fill_n(text.begin() + 4 * x, 3, grey);
    }
    std::vector<std::uint8_t> y(width), below(width), cb(width / 2), cr(width / 2), back(4 * width);
    std::uint8_t const* const rows[2] = {text.data(), text.data()};
    rowsToYCbCr420(rows, false, width, {{y.data(), below.data()}, cb.data(), cr.data()});
    rowFromYCbCr420(y.data(), {cb.data(), cb.data(), cr.data(), cr.data()}, width,
                    FromYCbCr({0.2126, 0.0722}, SampleRange::limited), back.data());
    for (std::size_t i = 0; i < back.size(); ++i) {
        if (i % 4 != 3) {
            ASSERT_NEAR(back[i], text[i], 1) << i;
        }
    }
}

}
}
