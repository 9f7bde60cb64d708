#include <TavaroAutomation/Input/Private/Glide.h>

#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace tavaro {

TEST(Glide, goesAllTheWayNeverBackNeverPastAndLeavesTheLineOnlyALittle) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> place(-500, 3000);
    for (int i = 0; i < 200; ++i) {
        UIPoint const from{place(random), place(random)}, to{place(random), place(random)};
        double const dx = to.x - from.x, dy = to.y - from.y, distance = std::hypot(dx, dy);
        Glide const glide(from, to);
        EXPECT_EQ(glide.at(0), from);
        double before = 0, fastest = 0;
        for (int step = 1; step <= 100; ++step) {
            auto const at = glide.at(step / 100.0);
            double const along = ((at.x - from.x) * dx + (at.y - from.y) * dy) / distance;
            double const beside = std::abs((at.x - from.x) * dy - (at.y - from.y) * dx) / distance;
            EXPECT_GE(along, before - 1e-6);
            EXPECT_LE(along, distance + 1e-6);
            EXPECT_LE(beside, std::min(30.0, distance * 0.04) + 1e-6);
            fastest = std::max(fastest, along - before);
            before = along;
        }
        EXPECT_LT(fastest, distance * 0.02) << "nothing jumps";
        EXPECT_NEAR(glide.at(1).x, to.x, 1e-6);
        EXPECT_NEAR(glide.at(1).y, to.y, 1e-6);
    }
    EXPECT_EQ(Glide({5, 6}, {5, 6}).at(0.5), (UIPoint{5, 6}));
}

TEST(Glide, goesByAnotherPointStraightAndSteadily) {
    UIPoint const from{100, 20}, by{100, 40}, to{260, 90};
    Glide const glide(from, to, by);
    EXPECT_EQ(glide.at(0), from);
    EXPECT_EQ(glide.at(1), to);
    double length = 0;
    for (int step = 1; step <= 1000; ++step) {
        auto const before = glide.at((step - 1) / 1000.0), at = glide.at(step / 1000.0);
        length += std::hypot(at.x - before.x, at.y - before.y);
        EXPECT_TRUE(at.y >= 40 || at.x == 100) << "first down, then along";
    }
    EXPECT_NEAR(length, 20 + std::hypot(160, 50), 0.5);
    EXPECT_EQ(Glide(from, to, to).at(1), to);
    EXPECT_EQ(Glide(from, to, from).at(1), to);
}

TEST(Glide, bendsToOneSideOfALongWay) {
    EXPECT_LT(Glide({0, 500}, {1000, 500}).at(0.5).y, 480);
    EXPECT_LT(Glide({1000, 500}, {0, 500}).at(0.5).y, 480);
}

}
