#include "Scenes.h"

#include <gtest/gtest.h>

namespace tavaro {

using namespace scenes;

TEST(ScreenTexture, eachLevelAveragesTheOneBeforeAtAnyWidth) {
    Random random(7);
    for (int width = 1; width <= 70; ++width) {
        auto const image = picture(random, width, 6);
        ScreenTexture const texture(image.view());
        auto const half = texture.ensureLevel(1);
        ASSERT_EQ(half.width, std::max(width / 2, 1));
        for (int x = 0; x < half.width; ++x) {
            // The share of the row that this texel stands for, in columns of the picture.
            double sum = 0;
            auto const from = static_cast<double>(x) * width / half.width;
            auto const to = static_cast<double>(x + 1) * width / half.width;
            for (int i = static_cast<int>(from); i < std::min(width, static_cast<int>(std::ceil(to))); ++i)
                sum +=
                    (std::min<double>(to, i + 1) - std::max<double>(from, i)) * (at(image, i, 2).b + at(image, i, 3).b);
            ASSERT_NEAR(half.row(1)[4 * x + 2], sum / (to - from) / 2, 0.51) << "width " << width << ", texel " << x;
        }
    }
}

TEST(ScreenTexture, aNewFrameOfTheSameSizeGetsNewLevels) {
    Image dark(6, 4), light(6, 4);
    for (int y = 0; y < 4; ++y) std::fill_n(light.row(y), 24, std::uint8_t{200});
    ScreenTexture texture(std::as_const(dark).view());
    EXPECT_EQ(texture.ensureLevel(2).row(0)[0], 0);
    texture.setFrame(std::as_const(light).view());
    EXPECT_EQ(texture.ensureLevel(2).row(0)[0], 200);
    EXPECT_EQ(texture.ensureLevel(99).width, 1);
}

}
