#include <TavaroVision/Reading/Private/TextLines.h>

#include "../Drawing/DrawnScreen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>

namespace tavaro {

namespace {

constexpr Ink white{255, 255, 255}, black{20, 20, 20}, gray{180, 180, 186};

/// The brightness of a picture, and a view of it.
struct Page {
    explicit Page(DrawnScreen const& screen) : Page(screen.width(), screen.height(), screen.gray()) {}
    Page(int width, int height, std::vector<std::uint8_t> values)
        : pixels(std::move(values))
        , view{pixels.data(), width, height, width} {}

    std::vector<TextLine> lines() const { return textLines(view, {0, 0, view.width, view.height}); }

    std::vector<std::uint8_t> pixels;
    GrayView view;
};

DrawnScreen blank(int width, int height, Ink ink = white) {
    DrawnScreen screen(width, height);
    screen.fill({0, 0, width, height}, ink);
    return screen;
}

/// The boxes of the text's letters, together.
PixelBox placeOf(DrawnScreen& screen, std::string const& text, int x, int top, TextFace const& face) {
    auto const& letters = screen.letters(text, face);
    return {x, top, letters.back().box.right(), screen.lineHeight(face)};
}

bool isInside(PixelBox const& box, PixelBox const& of) {
    return box.x >= of.x - 2 && box.y >= of.y && box.right() <= of.right() + 2 && box.bottom() <= of.bottom();
}

}

TEST(TextLines, everyLineIsFoundWhereItIs) {
    for (auto const* const family : {"JetBrains Mono", "Inter"})
        for (double const size : {11.0, 12.0, 14.0, 18.0, 24.0, 36.0, 48.0})
            for (bool const isDark : {false, true}) {
                SCOPED_TRACE(std::string(family) + " " + std::to_string(size));
                TextFace const face{family, size};
                auto screen = blank(1600, 900, isDark ? black : white);
                std::vector<PixelBox> places;
                for (int top = 9; top + screen.lineHeight(face) < 900; top += screen.lineHeight(face)) {
                    std::string const text = "Signed off by: anyone (2024-05-01), page " + std::to_string(top);
                    screen.write(text, 31, top, face, isDark ? gray : black);
                    places.push_back(placeOf(screen, text, 31, top, face));
                }
                auto const lines = Page(screen).lines();
                ASSERT_EQ(lines.size(), places.size());
                for (std::size_t i = 0; i < lines.size(); ++i) {
                    EXPECT_TRUE(isInside(lines[i].box, places[i])) << lines[i].box.x << ", " << lines[i].box.y;
                    EXPECT_GT(lines[i].box.width, 0.95 * places[i].width);
                    EXPECT_NEAR(lines[i].letterHeight, 0.75 * size, 0.2 * size + 1);
                    EXPECT_EQ(lines[i].isLightOnDark, isDark);
                }
            }
}

TEST(TextLines, wordsBelongTogetherAndColumnsDoNot) {
    TextFace const face{"JetBrains Mono", 14};
    auto screen = blank(1200, 100);
    screen.write("drwxr-xr-x   2 root root  4096", 20, 20, face, black);
    screen.write("Password", 500, 20, face, black);
    screen.write("API key", 500, 60, face, black);
    auto const lines = Page(screen).lines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_LT(lines[0].box.x, 24);
    EXPECT_GT(lines[0].box.right(), 20 + 29 * 8);
    EXPECT_NEAR(lines[1].box.x, 500, 3);
    EXPECT_NEAR(lines[2].box.y, 64, 4);
}

TEST(TextLines, fewLettersOfUprightStrokesAreALineToo) {
    for (auto const* const text : {"PIN", "8U", "HTML"}) {
        for (double const size : {13.0, 16.0, 20.0}) {
            auto screen = blank(300, 100, black);
            screen.write(text, 100, 40, {"Inter", size}, gray);
            EXPECT_EQ(Page(screen).lines().size(), 1U) << text << " " << size;
        }
    }
}

TEST(TextLines, bordersRulesAndIconsAreNoText) {
    TextFace const face{"Inter", 14};
    auto screen = blank(800, 400);
    for (int const height : {24, 30, 40}) {
        int const top = 4 * height - 60;
        screen.fill({100, top, 300, height}, gray);
        screen.fill({101, top + 1, 298, height - 2}, white);
        screen.write("value-of-a-field", 108, top + (height - screen.lineHeight(face)) / 2, face, black);
    }
    screen.fill({20, 200, 700, 1}, black);   // a rule
    screen.fill({600, 0, 1, 400}, black);    // and one downwards
    screen.fill({50, 250, 24, 24}, black);   // an icon
    screen.fill({100, 320, 200, 60}, black); // a button without a word
    auto const lines = Page(screen).lines();
    ASSERT_EQ(lines.size(), 3U);
    for (auto const& line : lines) {
        EXPECT_NEAR(line.box.x, 108, 2);
        EXPECT_LT(line.box.right(), 240);
    }
}

TEST(TextLines, aLabelIsApartFromTheFieldBesideIt) {
    TextFace const face{"Inter", 14};
    auto screen = blank(600, 80);
    auto const label = placeOf(screen, "Password", 20, 30, face);
    screen.write("Password", 20, 30, face, black);
    screen.fill({label.right() + 6, 22, 200, 34}, gray);
    screen.fill({label.right() + 7, 23, 198, 32}, white);
    screen.write("Mango-7", label.right() + 14, 30, face, black);
    auto const lines = Page(screen).lines();
    ASSERT_EQ(lines.size(), 2U);
    auto const& [left, right] = std::minmax(lines[0], lines[1], [](auto& a, auto& b) { return a.box.x < b.box.x; });
    EXPECT_LE(left.box.right(), label.right() + 2);
    EXPECT_NEAR(right.box.x, label.right() + 15, 2);
}

TEST(TextLines, noiseBesideALineDoesNotSwallowIt) {
    TextFace const face{"JetBrains Mono", 28};
    auto screen = blank(1600, 600, black);
    for (int i = 0; i < 12; ++i) screen.write("export NAME=value" + std::to_string(i), 40, 20 + 46 * i, face, gray);
    std::mt19937 random(2);
    for (int y = 0; y < 600; y += 12)
        for (int x = 396; x < 1600; x += 12) {
            auto const shade = static_cast<std::uint8_t>(random());
            screen.fill({x, y, 12, 12}, {shade, shade, shade});
        }
    auto lines = Page(screen).lines();
    std::erase_if(lines, [](auto const& line) { return line.box.x > 380; });
    ASSERT_EQ(lines.size(), 12U);
    for (auto const& line : lines) {
        EXPECT_LT(line.box.height, 40);
        EXPECT_LT(line.box.right(), 450) << "a block or two of it do no harm";
    }
}

TEST(TextLines, aPartIsLookedAtAsTheWholeIs) {
    TextFace const face{"Inter", 16};
    auto screen = blank(640, 480);
    for (int i = 0; i < 10; ++i) screen.write("line " + std::to_string(i) + " of ten", 40, 10 + 40 * i, face, black);
    Page const page(screen);
    auto const all = page.lines();
    auto const some = textLines(page.view, {0, 85, 640, 120});
    ASSERT_EQ(all.size(), 10U);
    ASSERT_EQ(some.size(), 3U);
    EXPECT_TRUE(std::ranges::equal(some, std::span(all).subspan(2, 3)));
    EXPECT_TRUE(textLines(page.view, {2000, 0, 100, 100}).empty());
    EXPECT_EQ(textLines(page.view, {-50, -50, 5000, 5000}), all);
}

TEST(TextLines, picturesWithoutTextHaveNone) {
    EXPECT_TRUE(Page(1, 1, {128}).lines().empty());
    EXPECT_TRUE(Page(64, 1, std::vector<std::uint8_t>(64, 9)).lines().empty());
    EXPECT_TRUE(Page(blank(1920, 1080)).lines().empty());
    std::vector<std::uint8_t> gradient(640 * 360), noise(1920 * 1080);
    for (std::size_t i = 0; i < gradient.size(); ++i) gradient[i] = static_cast<std::uint8_t>(i % 640 * 255 / 639);
    std::mt19937 random(11);
    for (auto& pixel : noise) pixel = static_cast<std::uint8_t>(random());
    EXPECT_TRUE(Page(640, 360, gradient).lines().empty());
    EXPECT_LE(Page(1920, 1080, noise).lines().size(), 3U);
}

TEST(TextLines, inTheLargestPictureLinesAreFoundToo) {
    TextFace const face{"Inter", 28};
    auto screen = blank(7680, 4320, black);
    screen.write("at the right end", 7400, 4270, face, white);
    auto const lines = Page(screen).lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_GT(lines[0].box.x, 7390);
}

}
