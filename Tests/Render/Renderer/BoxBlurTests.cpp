#include <TavaroRender/Renderer/Private/BoxBlur.h>

#include <gtest/gtest.h>

namespace tavaro {

namespace {

TEST(BoxBlur, spreadsADotEvenlyAndKeepsItsLight) {
    Image image(61, 41);
    image.row(20)[4 * 30] = 255;
    for (int y = 17; y < 24; ++y) {
        for (int x = 27; x < 34; ++x) image.row(y)[4 * x] = 255;
    }
    boxBlur(image, 4);
    long sum = 0;
    for (int y = 0; y < 41; ++y) {
        for (int x = 0; x < 61; ++x) {
            sum += image.row(y)[4 * x];
            EXPECT_NEAR(image.row(y)[4 * x], image.row(40 - y)[4 * x], 1);
            EXPECT_NEAR(image.row(y)[4 * x], image.row(y)[4 * (60 - x)], 1);
        }
    }
    EXPECT_NEAR(sum, 49 * 255, 49 * 255 / 25);
    EXPECT_LT(image.row(20)[4 * 30], 200);
}

TEST(BoxBlur, leavesAnEvenPictureAsItIsUpToItsEdgesEvenWithARadiusBeyondThem) {
    Image image(17, 5);
    for (int y = 0; y < 5; ++y) std::fill_n(image.row(y), 4 * 17, std::uint8_t{77});
    boxBlur(image, 1000);
    for (int y = 0; y < 5; ++y) {
        for (int i = 0; i < 4 * 17; ++i) ASSERT_EQ(image.row(y)[i], 77);
    }
}

}

}
