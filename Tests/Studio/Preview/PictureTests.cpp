#include <Tavaro/Studio/Preview/Coarseness.h>
#include <Tavaro/Studio/Preview/PictureSize.h>
#include <Tavaro/Studio/Preview/PictureSlot.h>

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace tavaro {

TEST(PictureSize, picturesFitIntoTheirRoomInTheShapeOfTheirFilmAndAreShownWithoutACopy) {
    for (Size2 const canvas : {Size2{1920, 1080}, {1080, 1920}, {1080, 1080}, {3840, 2160}, {1366, 768}, {640, 400}}) {
        for (std::int64_t width = 60; width < 2600; width += 37) {
            for (std::int64_t const height : {50, 333, 720, 1441}) {
                auto const size = pictureSize(canvas, {width, height});
                SCOPED_TRACE(testing::Message()
                             << canvas.width << "x" << canvas.height << " in " << width << "x" << height);
                EXPECT_EQ(size.width % 16, 0);
                EXPECT_EQ(size.height % 2, 0);
                EXPECT_LE(size.width, std::min(width, canvas.width));
                EXPECT_LE(size.height, std::min(height, canvas.height) + 1);
                bool const isSmallest = size.width == 16 || size.height == 16;
                double const shown = double(size.width) * double(canvas.height) / double(canvas.width);
                if (!isSmallest) EXPECT_NEAR(double(size.height), shown, 1.01);
                // No larger one would fit.
                bool const isLarge = size.width + 16 > std::min(width, canvas.width) ||
                                     shown + 16 * shown / double(size.width) > double(std::min(height, canvas.height));
                EXPECT_TRUE(isLarge);
                for (int divisor = 1; divisor <= Coarseness::coarsest; ++divisor)
                    EXPECT_EQ(coarserSize(size, divisor).width % 16, 0);
            }
        }
        EXPECT_EQ(pictureSize(canvas, canvas).height,
                  canvas.width % 16 == 0 ? canvas.height : pictureSize(canvas, canvas).height);
        EXPECT_EQ(pictureSize(canvas, {}), Size2{});
    }
    EXPECT_EQ(pictureSize({}, {100, 100}), Size2{});
}

/// Drawing at one in `divisor` pixels a side costs a square's share.
TEST(Coarseness, picturesAreAsFineAsKeepsUpAndStaySo) {
    for (double const full : {0.01, 0.05, 0.1, 0.25, 0.9}) {
        SCOPED_TRACE(full);
        Coarseness coarseness;
        auto const cost = [&] { return full / (coarseness.divisor() * coarseness.divisor()); };
        for (int i = 0; i < 300; ++i) coarseness.note(0.005, cost());
        bool const isAsFarAsItGoes = coarseness.divisor() == Coarseness::coarsest;
        EXPECT_TRUE(cost() <= 0.029 || isAsFarAsItGoes);
        if (coarseness.divisor() > 1)
            EXPECT_GT(full / std::pow(coarseness.divisor() - 1, 2), 0.7 * 0.028) << "it could be finer";
        int changes = 0;
        for (int i = 0; i < 3000; ++i) {
            int const before = coarseness.divisor();
            coarseness.note(0.005, cost());
            changes += before != coarseness.divisor();
        }
        EXPECT_LE(changes, 2);
    }
    Coarseness coarseness;
    for (int i = 0; i < 20; ++i) coarseness.note(0.005, 0.1);
    EXPECT_GT(coarseness.divisor(), 1);
    for (int i = 0; i < 3000; ++i) coarseness.note(0.005, 0.004);
    EXPECT_EQ(coarseness.divisor(), 1) << "what was slow for a while is fine again";
}

TEST(PictureSlot, theLatestPictureWinsAndCanvasesComeBack) {
    PictureSlot slot;
    std::set<Image const*> used;
    std::shared_ptr<Image const> shown;
    for (int i = 0; i < 40; ++i) {
        auto const canvas = slot.canvas({64, 32});
        EXPECT_EQ(canvas->stride(), 4 * 64);
        EXPECT_NE(canvas, shown) << "what is shown is drawn into";
        used.insert(canvas.get());
        EXPECT_EQ(slot.put({.canvas = canvas, .at = double(i)}), i % 3 == 0) << "who shows them is told once";
        if (i % 3 < 2) continue;
        auto const taken = slot.take();
        ASSERT_TRUE(taken);
        EXPECT_EQ(taken->at, i);
        shown = taken->canvas;
        EXPECT_FALSE(slot.take());
    }
    EXPECT_LE(used.size(), 3U);
    EXPECT_EQ(slot.canvas({128, 32})->width(), 128);
}

}
