#include <TavaroAutomation/Input/Private/PixelShift.h>

#include <gtest/gtest.h>
#include <random>

namespace tavaro {

namespace {

constexpr int width = 200, height = 300;

/// A page of text-like rows, some of them blank, and a bar on the left that stays.
struct Page {
    std::vector<std::uint32_t> rows;
    explicit Page(unsigned seed) : rows(2000) {
        std::mt19937 random(seed);
        for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = i % 20 < 8 ? 0 : static_cast<std::uint32_t>(random());
    }
    std::vector<std::uint32_t> picture(int top, int barWidth = 0) const {
        std::vector<std::uint32_t> pixels;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x)
                pixels.push_back(x < barWidth
                                     ? static_cast<std::uint32_t>(y * 7919 + x)
                                     : rows[static_cast<std::size_t>(top + y)] * static_cast<std::uint32_t>(x + 1));
        }
        return pixels;
    }
};

PictureLines rowsOf(std::vector<std::uint32_t> const& pixels) { return {{pixels, width, height}, LineDirection::rows}; }

PictureLines columnsOf(std::vector<std::uint32_t> const& pixels) {
    std::vector<std::uint32_t> turned(pixels.size());
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            turned[static_cast<std::size_t>(x) * height + y] = pixels[static_cast<std::size_t>(y) * width + x];
    return {{turned, height, width}, LineDirection::columns};
}

}

TEST(PictureLines, whatMovedIsFoundAlsoBesideWhatStays) {
    Page const page(3);
    for (int const shift : {1, 17, 50, 138, 200}) {
        for (int const bar : {0, 40, 90}) {
            auto const before = page.picture(400, bar), down = page.picture(400 + shift, bar),
                       up = page.picture(400 - shift, bar);
            EXPECT_EQ(rowsOf(down).movedSince(rowsOf(before), 1), shift) << bar;
            EXPECT_EQ(rowsOf(up).movedSince(rowsOf(before), -1), shift) << bar;
            EXPECT_EQ(columnsOf(down).movedSince(columnsOf(before), 1), shift) << bar;
        }
    }
}

TEST(PictureLines, whatRepeatsItselfDoesNotMislead) {
    Page page(3);
    for (std::size_t i = 0; i < page.rows.size(); ++i) {
        if (i % 60 >= 20) page.rows[i] = static_cast<std::uint32_t>(i % 20) * 7919; // two of three lines are the same
    }
    EXPECT_EQ(rowsOf(page.picture(460)).movedSince(rowsOf(page.picture(400)), 1), 60);
    EXPECT_EQ(rowsOf(page.picture(418)).movedSince(rowsOf(page.picture(400)), 1), 18);
}

TEST(PictureLines, aCaretOrAnotherPictureIsNoMovement) {
    Page const page(3);
    auto const before = page.picture(400);
    auto caret = before;
    for (int y = 100; y < 116; ++y) caret[static_cast<std::size_t>(y) * width + 50] ^= 0xffffff;
    EXPECT_FALSE(rowsOf(caret).movedSince(rowsOf(before), 1));
    EXPECT_FALSE(rowsOf(before).movedSince(rowsOf(before), 1));
    EXPECT_FALSE(rowsOf(Page(4).picture(400)).movedSince(rowsOf(before), 1));
    EXPECT_FALSE(rowsOf(page.picture(450)).movedSince(rowsOf(before), -1)) << "the other way";
    EXPECT_LT(rowsOf(caret).changedShare(rowsOf(before), 50), 0.2);
    EXPECT_GT(rowsOf(Page(4).picture(400)).changedShare(rowsOf(before), 150), 0.9);
}

}
