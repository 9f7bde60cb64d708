#include <TavaroVision/Scanning/Private/CoverEdges.h>
#include <Tests/Vision/Drawing/DrawnScreen.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace tavaro {

namespace {

constexpr int width = 600, height = 120, paper = 30;
constexpr auto families = {"JetBrains Mono", "DejaVu Sans Mono", "DejaVu Sans"};

/// Light text on a dark ground; a value in it is to be covered.
struct Page {
    DrawnScreen screen{width, height};
    TextFace face;
    PixelBox text;
    std::vector<std::uint8_t> gray;

    explicit Page(TextFace const& font) : face(font) { screen.fill({0, 0, width, height}, {paper, paper, paper}); }

    void write(std::string const& line, int y) { screen.write(line, 10, y, face, {215, 215, 215}); }

    CoverEdges cover(std::string const& before, std::string const& value, std::string const& after, int y) {
        auto const line = before + value + after;
        write(line, y);
        auto const letters = screen.letters(line, face);
        auto const &first = letters[before.size()].box, &last = letters[before.size() + value.size() - 1].box;
        text = {10 + first.x, y, last.right() - first.x, screen.lineHeight(face)};
        gray = screen.gray();
        return coverEdges({gray.data(), width, height, width}, text, static_cast<int>(face.size * 0.75));
    }

    /// How many of the eight places that a mask takes its colors from are ground, between two pixels each way.
    int clean(PixelBox const& mask) const {
        int const left = mask.x - 3, right = mask.right() + 3, top = mask.y - 3, bottom = mask.bottom() + 3;
        int const middle = (left + right) / 2, center = (top + bottom) / 2;
        int count = 0;
        for (auto const& [x, y] : {std::pair{left, top},
                                   {middle, top},
                                   {right, top},
                                   {right, center},
                                   {right, bottom},
                                   {middle, bottom},
                                   {left, bottom},
                                   {left, center}})
            count += isGround(x, y) ? 1 : 0;
        return count;
    }
    bool isGround(int x, int y) const {
        for (int const row : {y - 1, y}) {
            for (int const column : {x - 1, x}) {
                if (std::abs(gray[static_cast<std::size_t>(row * width + column)] - paper) > 10) return false;
            }
        }
        return true;
    }
};

}

TEST(CoverEdges, areWhereAMaskFindsTheGroundBetweenLettersAndLines) {
    int clean = 0, all = 0;
    for (double const size : {11.0, 13.0, 16.0, 21.0}) {
        for (auto const* family : families) {
            Page page({.family = family, .size = size});
            int const step = page.screen.lineHeight(page.face);
            page.write("your account at the shop, as it is: jpg, (yes) gypsy [quay]", 40 - step);
            page.write("Bdflkh ATOM ßüö \"Quay\" {key} Whatever, call (0170) |||||||", 40 + step);
            auto const edges = page.cover("GITHUB_TOKEN=", "ghp_WoAJ8pJc103LUb", "&state=ok", 40);
            auto const mask = edges.around(page.text);
            EXPECT_GT(std::min(edges.left, edges.right), 1);
            EXPECT_GT(std::min(edges.above, edges.below), 1);
            EXPECT_LT(mask.width, page.text.width + 3 * size);
            EXPECT_LT(mask.height, page.text.height + 1.5 * size);
            clean += page.clean(mask);
            all += 8;
        }
    }
    EXPECT_GE(clean, all * 5 / 6) << "of " << all; // there is not always a gap
}

}
