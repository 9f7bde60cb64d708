#include <Tavaro/Studio/Recorder/BarPlace.h>

#include <gtest/gtest.h>

#include <random>

using namespace tavaro;

namespace {

constexpr PixelRect first{0, 0, 1920, 1080}, second{1920, 0, 1280, 720}, bar{0, 0, 400, 56};

}

TEST(BarPlace, theBarIsNeverInThePictureWhereverThereIsRoomForIt) {
    std::mt19937 random(11);
    int found = 0;
    for (int i = 0; i < 3000; ++i) {
        auto const upTo = [&](int most) { return std::uniform_int_distribution(0, most)(random); };
        PixelRect film{upTo(1800), upTo(1000), 64 + upTo(1900), 64 + upTo(1100)};
        film = film.intersection(first);
        BarRoom const room{.screens = {first}, .filmed = film, .bar = bar, .kept = PixelPoint{upTo(1900), upTo(1000)}};
        bool const hasRoom = std::max(film.y, 1080 - film.y - film.height) >= bar.height ||
                             std::max(film.x, 1920 - film.x - film.width) >= bar.width;
        auto const place = barPlace(room);
        ASSERT_EQ(place.has_value(), hasRoom) << film.x << "," << film.y << " " << film.width << "x" << film.height;
        if (!place) continue;
        ++found;
        PixelRect const there{place->x, place->y, bar.width, bar.height};
        EXPECT_TRUE(there.intersection(film).isEmpty());
        EXPECT_EQ(there.intersection(first), there);
    }
    EXPECT_GT(found, 300);
}

TEST(BarPlace, aWholeScreenLeavesTheOtherOneAndAloneLeavesNone) {
    EXPECT_FALSE(barPlace({.screens = {first}, .filmed = first, .bar = bar}));
    auto const other = barPlace({.screens = {first, second}, .filmed = first, .bar = bar});
    ASSERT_TRUE(other);
    EXPECT_GE(other->x, second.x);
    EXPECT_EQ(barPlace({.screens = {first}, .filmed = {}, .bar = bar, .kept = PixelPoint{7, 9}}), (PixelPoint{7, 9}))
        << "a window's picture never has the bar, which stays where it was put";
    EXPECT_NE(barPlace({.screens = {first}, .filmed = {}, .bar = bar, .kept = PixelPoint{1900, 9}}),
              (PixelPoint{1900, 9}))
        << "unless that is off the screen by now";
}
