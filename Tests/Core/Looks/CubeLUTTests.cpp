#include <TavaroCore/Looks/CubeLUT.h>

#include <cmath>
#include <limits>
#include <random>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace tavaro {

namespace {

using Kind = CubeLUT::ParseError::Kind;

std::string entries(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += fmt::format("{} 0.5 {}\n", i / 16.0, 1 - i / 16.0);
    return text;
}

std::string const eight = entries(8);

void expectRefused(std::string const& text, Kind kind, std::string const& sentence) {
    try {
        CubeLUT::parse(text);
        ADD_FAILURE() << "was read: " << text.substr(0, 200);
    } catch (CubeLUT::ParseError const& error) {
        EXPECT_EQ(error.what(), sentence);
        EXPECT_EQ(error.kind(), kind) << error.what();
    }
}

std::string written(CubeLUT const& table) {
    auto text = fmt::format("TITLE \"{}\"\nLUT_3D_SIZE {}\n", table.title.value_or(""), table.size);
    for (std::size_t i = 0; i < table.values.size(); i += 3)
        text += fmt::format("{} {} {}\n", table.values[i], table.values[i + 1], table.values[i + 2]);
    return text;
}

}

TEST(CubeLUT, readsBackWhatWasWrittenUpToTheLargestSize) {
    for (int const size : {2, 17, 65}) {
        auto table = CubeLUT::identity(size);
        std::mt19937 random(static_cast<unsigned>(size));
        for (auto& value : table.values)
            value = std::ldexp(static_cast<float>(random()), -static_cast<int>(random() % 60));
        table.title = "Evening sun";
        EXPECT_EQ(CubeLUT::parse(written(table)), table) << size;
    }
}

TEST(CubeLUT, doesNotMindHowAFileIsLaidOut) {
    auto const plain = CubeLUT::parse("LUT_3D_SIZE 2\n" + eight);
    auto crlf = "LUT_3D_SIZE 2\n" + eight;
    for (std::size_t at = 0; (at = crlf.find('\n', at)) != std::string::npos; at += 2) crlf.replace(at, 1, "\r\n");
    EXPECT_EQ(CubeLUT::parse(crlf), plain);
    EXPECT_EQ(CubeLUT::parse("\xEF\xBB\xBF# first\nLUT_3D_SIZE 2\n" + eight), plain);
    EXPECT_EQ(CubeLUT::parse(eight + "\t LUT_3D_SIZE\t2 \t"), plain) << "keywords may come last, without a line end";
    EXPECT_EQ(CubeLUT::parse("LUT_1D_SIZE 8\nLUT_3D_SIZE 2\n0 \t0.5\t1e0\n#\n" + eight.substr(8) +
                             "\n  # end\nLUT_1D_INPUT_RANGE 0 1\nLUT_3D_INPUT_RANGE what ever\n"),
              plain);
    auto const signs = CubeLUT::parse("LUT_3D_SIZE 2\n+1E-2 -.5 1.25e+1\n" + entries(7));
    EXPECT_EQ(signs.values[0], 0.01f);
    EXPECT_EQ(signs.values[1], -0.5f);
    EXPECT_EQ(signs.values[2], 12.5f);
    EXPECT_EQ(CubeLUT::parse("LUT_3D_SIZE 2\n1e-999 0 1e-60\n" + entries(7)).values[0], 0)
        << "too small to be told from zero";
}

TEST(CubeLUT, takesTheTitleWithoutItsQuotes) {
    EXPECT_EQ(CubeLUT::parse("TITLE \"Soft  rose\"\nLUT_3D_SIZE 2\n" + eight).title, "Soft  rose");
    EXPECT_EQ(CubeLUT::parse("TITLE Plain words\r\nLUT_3D_SIZE 2\n" + eight).title, "Plain words");
    EXPECT_EQ(CubeLUT::parse("LUT_3D_SIZE 2\n" + eight).title, std::nullopt);
}

TEST(CubeLUT, bringsValuesOfAnotherDomainToUnitRange) {
    auto const table = CubeLUT::parse("LUT_3D_SIZE 2\nDOMAIN_MIN -1 0 0.25\nDOMAIN_MAX 1 255 0.25\n"
                                      "0 51 0.5\n-1 255 0\n1 0 1\n" +
                                      entries(5));
    EXPECT_FLOAT_EQ(table.values[0], 0.5f);
    EXPECT_FLOAT_EQ(table.values[1], 0.2f);
    EXPECT_FLOAT_EQ(table.values[2], 0.5f) << "a domain without extent divides nothing";
    EXPECT_FLOAT_EQ(table.values[3], 0);
    EXPECT_FLOAT_EQ(table.values[4], 1);
    EXPECT_FLOAT_EQ(table.values[6], 1);
    auto const huge = CubeLUT::parse("DOMAIN_MAX 1e-5 1 1\nLUT_3D_SIZE 2\n3e38 0 0\n" + entries(7));
    EXPECT_TRUE(std::isfinite(huge.values[0]));
}

TEST(CubeLUT, refusesEachKindOfBadFileWithItsSentence) {
    auto const isNoTable = "This isn't a 3D .cube file (no LUT_3D_SIZE).";
    for (auto const* head : {"", "LUT_1D_SIZE 8\n", "LUT_3D_SIZE 1\n", "LUT_3D_SIZE 0\n", "LUT_3D_SIZE -7\n"})
        expectRefused(head + eight, Kind::missingSize, isNoTable);
    expectRefused("", Kind::missingSize, isNoTable);
    expectRefused("LUT_3D_SIZE 66\n" + eight, Kind::tooLarge, "66³ LUT is larger than Tavaro supports (65³).");
    expectRefused("LUT_3D_SIZE 99999999999999999999\n", Kind::tooLarge,
                  "99999999999999999999³ LUT is larger than Tavaro supports (65³).");
    expectRefused("LUT_3D_SIZE " + std::string(1 << 20, '9') + "\n", Kind::tooLarge,
                  std::string(20, '9') + "…³ LUT is larger than Tavaro supports (65³).");
    expectRefused("LUT_3D_SIZE 2\n" + entries(7), Kind::wrongCount, "The .cube file should have 24 entries but has 21");
    expectRefused("LUT_3D_SIZE 2\n" + entries(9), Kind::wrongCount, "The .cube file should have 24 entries but has 27");
    auto const bad = [](std::string const& line) {
        expectRefused("LUT_3D_SIZE 2\n  " + line + "\t\n" + eight, Kind::badLine,
                      "Couldn't read this line of the .cube file: " + line);
    };
    for (auto const* line : {"0.1 0.2", "0 0 0 0", "0,1 0,2 0,3", "0 0 nan", "inf 0 0", "0 1e39 0", "0 0 1e999",
                             "LUT_2D_SIZE 4", "title x", "0x1 0 0", "+-1 0 0", "LUT_3D_SIZE two", "LUT_3D_SIZE",
                             "DOMAIN_MIN 0 0", "DOMAIN_MAX 1 1 one", "1 2 3abc"})
        bad(line);
}

TEST(CubeLUT, quotesOfALongBadLineOnlyWhatIsReadAtAGlance) {
    try {
        CubeLUT::parse(std::string(119, 'x') + "ééé\x01" + std::string(1 << 20, 'y'));
        FAIL();
    } catch (CubeLUT::ParseError const& error) {
        EXPECT_EQ(error.what(), "Couldn't read this line of the .cube file: " + std::string(119, 'x') + "…");
    }
}

TEST(CubeLUT, theIdentityOfEverySizeChangesNoColour) {
    std::mt19937 random(7);
    for (int size = 2; size <= CubeLUT::largestSize; size += 9) {
        auto const table = CubeLUT::identity(size);
        for (int i = 0; i < 200; ++i) {
            CubeLUT::Color color;
            for (auto& channel : color) channel = static_cast<float>(random() % 10001) / 10000;
            auto const mapped = table.apply(color);
            for (std::size_t c = 0; c < 3; ++c) EXPECT_NEAR(mapped[c], color[c], 1e-6) << size;
        }
    }
}

TEST(CubeLUT, mapsByRedFastestAndMixesItsNeighbours) {
    auto table = CubeLUT::identity(2);
    table.values[3] = 0.25f; // red alone
    EXPECT_FLOAT_EQ(table.apply({1, 0, 0})[0], 0.25f);
    EXPECT_FLOAT_EQ(table.apply({0.5f, 0, 0})[0], 0.125f);
    EXPECT_FLOAT_EQ(table.apply({1, 0.5f, 0})[0], (0.25f + 1) / 2) << "halfway to yellow";
    EXPECT_EQ(table.apply({9, -3, std::numeric_limits<float>::quiet_NaN()}), table.apply({1, 0, 0}));
}

}
