#include <TavaroVision/Scanning/Private/CoverEdges.h>
#include <Tests/Vision/Drawing/DrawnScreen.h>

#include <gtest/gtest.h>

#include <cstdlib>

namespace tavaro {

TEST(CoverEdges, areWhereAMaskFindsTheGround) {
    constexpr int width = 600, height = 60;
    std::string const before = "GITHUB_TOKEN=", value = "ghp_WoAJ8pJc103LUb", after = "&state=ok";
    int clean = 0, all = 0;
    for (double const size : {11.0, 13.0, 16.0, 21.0}) {
        for (auto const* family : {"JetBrains Mono", "DejaVu Sans Mono", "DejaVu Sans"}) {
            DrawnScreen screen(width, height);
            TextFace const face{.family = family, .size = size};
            screen.fill({0, 0, width, height}, {30, 30, 30});
            screen.write(before + value + after, 10, 15, face, {215, 215, 215});
            auto const letters = screen.letters(before + value + after, face);
            auto const &first = letters[before.size()].box, &last = letters[before.size() + value.size() - 1].box;
            PixelBox const text{10 + first.x, 15, last.right() - first.x, screen.lineHeight(face)};
            auto const gray = screen.gray();
            GrayView const picture{gray.data(), width, height, width};

            auto const edges = coverEdges(picture, text, static_cast<int>(size * 0.75));
            auto const around = edges.around(text);
            int const middle = around.y + around.height / 2;
            EXPECT_GT(edges.left, 1);
            EXPECT_GT(edges.right, 1);
            EXPECT_LT(around.width, text.width + 3 * size);
            EXPECT_LT(around.height, text.height + size);
            for (int const x : {around.x - 3, around.right() + 3}) { // between two pixels each way
                bool isGround = true;
                for (int const column : {x - 1, x}) {
                    for (int const row : {middle - 1, middle})
                        isGround &= std::abs(gray[static_cast<std::size_t>(row * width + column)] - 30) <= 10;
                }
                clean += isGround ? 1 : 0;
                ++all;
            }
        }
    }
    EXPECT_GE(clean, all - 2) << "of " << all; // a stroke may reach all along
}

}
