#include <TavaroCore/Cursor/CursorSmoother.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

using namespace tavaro;

namespace {

using Path = std::vector<CursorSample>;

Path pathOf(std::vector<double> const& across, double rate) {
    Path path;
    for (std::size_t i = 0; i < across.size(); ++i) {
        path.push_back({static_cast<double>(i) / rate, {across[i], 1 - across[i]}, CursorKind::arrow});
    }
    return path;
}

Path randomPath(unsigned seed, std::size_t count) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> step(-0.03, 0.03);
    std::uniform_real_distribution<double> pause(0.005, 0.03);
    Path path;
    CursorSample sample{0, {0.5, 0.5}};
    for (std::size_t i = 0; i < count; ++i) {
        sample.kind = static_cast<CursorKind>(i % 9);
        path.push_back(sample);
        sample.t += pause(random);
        sample.position = {sample.position.x + step(random), sample.position.y + step(random)};
    }
    return path;
}

std::vector<ClickEvent> clicksAt(std::vector<double> const& times) {
    std::vector<ClickEvent> clicks;
    for (double const t : times) clicks.push_back({.t = t});
    return clicks;
}

/// Mean time of the motion, weighted by how far each step goes.
double timeOfMotion(Path const& path) {
    double weighted = 0;
    double whole = 0;
    for (std::size_t i = 1; i < path.size(); ++i) {
        double const step = path[i].position.distance(path[i - 1].position);
        weighted += step * (path[i].t + path[i - 1].t) / 2;
        whole += step;
    }
    return weighted / whole;
}

}

TEST(CursorSmoother, meetsTheFormulaOnAShortPathWithARepeatedTimeAndAClick) {
    auto path = pathOf({0.1, 0.12, 0.11, 0.2, 0.35, 0.3, 0.5, 0.52, 0.55, 0.6, 0.58, 0.8, 0.79, 0.9}, 50);
    path[8].t = path[7].t;
    auto const smooth = CursorSmoother(0.7, 0.09).smooth(path, clicksAt({0.10}));
    // From a separate implementation of the filter.
    std::vector<double> const expected{0.1,
                                       0.137431410451377,
                                       0.182967989410223,
                                       0.233722740716534,
                                       0.320112044838954,
                                       0.3,
                                       0.431637231110724,
                                       0.410621676905848,
                                       0.595737883948969,
                                       0.657768822170897,
                                       0.701780320767496,
                                       0.767214309542054,
                                       0.818200576466922,
                                       0.9};
    ASSERT_EQ(smooth.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(smooth[i].position.x, expected[i], 1e-12) << i;
        EXPECT_NEAR(smooth[i].position.y, 1 - expected[i], 1e-12) << i;
    }
}

TEST(CursorSmoother, meetsTheFormulaOnAPathLongerThanItsPadding) {
    Path path;
    for (int i = 0; i < 40; ++i) {
        path.push_back({i / 60.0 + 0.004 * (i % 3), {0.5 + 0.3 * std::sin(0.7 * i) * std::cos(0.31 * i), 0}});
    }
    auto const smooth = CursorSmoother(1, 0.09).smooth(path, {});
    // From a separate implementation of the filter.
    std::vector<double> const expected{0.637830872815851, 0.513736705381196, 0.481522595473514, 0.491225443908235,
                                       0.534945687642333, 0.460121047163297, 0.706494342139542};
    std::size_t const at[] = {1, 5, 10, 15, 20, 30, 38};
    for (std::size_t k = 0; k < expected.size(); ++k)
        EXPECT_NEAR(smooth[at[k]].position.x, expected[k], 1e-12) << at[k];
}

TEST(CursorSmoother, amountZeroAndShortPathsComeBackAsTheyAre) {
    auto const path = randomPath(1, 50);
    EXPECT_EQ(CursorSmoother(0, 0.09).smooth(path, clicksAt({0.2})), path);
    EXPECT_EQ(CursorSmoother(-3, 0.09).smooth(path, {}), path);
    EXPECT_EQ(CursorSmoother(7, 0.09).smooth(path, {}), CursorSmoother(1, 0.09).smooth(path, {}));
    for (std::size_t n = 0; n < 3; ++n) {
        auto const few = randomPath(2, n);
        EXPECT_EQ(CursorSmoother(1, 0.09).smooth(few, {}), few);
    }
}

TEST(CursorSmoother, onlyPositionsChangeAndTheEndsNever) {
    for (unsigned seed = 1; seed <= 150; ++seed) {
        auto const path = randomPath(seed, 3 + seed % 70);
        auto const smooth = CursorSmoother(0.01 * (seed % 101), 0.09).smooth(path, clicksAt({0.3, 0.1}));
        ASSERT_EQ(smooth.size(), path.size());
        EXPECT_EQ(smooth.front(), path.front()) << "seed " << seed;
        EXPECT_EQ(smooth.back(), path.back()) << "seed " << seed;
        for (std::size_t i = 0; i < path.size(); ++i) {
            EXPECT_EQ(smooth[i].t, path[i].t);
            EXPECT_EQ(smooth[i].kind, path[i].kind);
        }
    }
}

TEST(CursorSmoother, theInstantOfAClickKeepsItsRecordedPositionAndTheSmoothingFadesBackIn) {
    constexpr double window = 0.09;
    auto const path = randomPath(5, 400);
    std::size_t const clicked[] = {3, 120, 121, 300, 396};
    std::vector<double> times;
    for (auto const i : clicked) times.insert(times.begin(), path[i].t); // not in order
    auto const free = CursorSmoother(0.8, window).smooth(path, {});
    auto const pinned = CursorSmoother(0.8, window).smooth(path, clicksAt(times));
    for (auto const i : clicked) EXPECT_EQ(pinned[i].position, path[i].position) << i;
    for (std::size_t i = 0; i < path.size(); ++i) {
        double distance = 1e9;
        for (double const t : times) distance = std::min(distance, std::abs(path[i].t - t));
        double const left = distance < window ? 1 - distance / window : 0;
        auto const expected = UnitPoint2::lerp(path[i].position, free[i].position, 1 - left * left * left);
        EXPECT_NEAR(pinned[i].position.distance(expected), 0, 1e-12) << i;
    }
}

TEST(CursorSmoother, aMoveIsNeitherLateNorEarly) {
    std::vector<double> across;
    for (int i = 0; i <= 180; ++i) { // rests, glides for a second, rests
        double const u = std::clamp((i - 60) / 60.0, 0.0, 1.0);
        across.push_back(0.2 + 0.6 * u * u * (3 - 2 * u));
    }
    for (double amount : {0.3, 0.7, 1.0}) {
        auto const smooth = CursorSmoother(amount, 0.09).smooth(pathOf(across, 60), {});
        // One pass alone would be late by about 1 / (2π cutoff), 30 to 110 ms.
        EXPECT_NEAR(timeOfMotion(smooth), 1.5, 0.004) << amount;
        EXPECT_GT(smooth[58].position.x, 0.2) << "the smoothed move begins a little before";
    }
}

TEST(CursorSmoother, jitterShrinksWithTheAmount) {
    std::mt19937 random(11);
    std::normal_distribution<double> noise(0.5, 0.004);
    std::vector<double> across(600);
    for (auto& x : across) x = noise(random);
    double previous = 0.004 * 0.75;
    for (double amount : {0.2, 0.6, 1.0}) {
        auto const smooth = CursorSmoother(amount, 0.09).smooth(pathOf(across, 60), {});
        double sum = 0;
        for (std::size_t i = 30; i < 570; ++i) sum += std::pow(smooth[i].position.x - 0.5, 2);
        double const deviation = std::sqrt(sum / 540);
        EXPECT_LT(deviation, previous) << amount;
        previous = deviation;
    }
}

TEST(CursorSmoother, absurdPositionsStayNumbers) {
    auto path = randomPath(3, 40);
    path[10].position = {1e308, -1e308};
    path[20].position = {-1e308, 1e308};
    for (auto const& sample : CursorSmoother(1, 0.09).smooth(path, {})) {
        EXPECT_TRUE(std::isfinite(sample.position.x) && std::isfinite(sample.position.y)) << sample.t;
    }
}

TEST(PositionOnAPath, runsThroughTheSamplesOnASmoothCurve) {
    Path const path{{0, {0, 0}}, {1, {0, 1}}, {2, {1, 1}}, {4, {1, 0}}};
    for (auto const& sample : path) EXPECT_EQ(CursorSmoother::position(path, sample.t), sample.position);
    // Halfway between two samples the curve is (9 (P1 + P2) − P0 − P3) / 16.
    EXPECT_EQ(CursorSmoother::position(path, 1.5), (UnitPoint2{(9 * 1 - 0 - 1) / 16.0, (9 * 2 - 0 - 0) / 16.0}));
    // At an end the missing neighbour is the end itself.
    EXPECT_EQ(CursorSmoother::position(path, 0.5), (UnitPoint2{(0 - 0 - 1) / 16.0, (9 * 1 - 0 - 1) / 16.0}));
    EXPECT_EQ(CursorSmoother::position(path, 3), (UnitPoint2{(9 * 2 - 0 - 1) / 16.0, (9 * 1 - 1 - 0) / 16.0}));
}

TEST(PositionOnAPath, isHeldBeyondTheEndsAndStraightOnFewSamples) {
    Path const path{{1, {0.1, 0}}, {2, {0.2, 0}}, {3, {0.4, 0}}, {4, {0.8, 0}}};
    EXPECT_EQ(CursorSmoother::position(path, -5)->x, 0.1);
    EXPECT_EQ(CursorSmoother::position(path, 99)->x, 0.8);
    EXPECT_FALSE(CursorSmoother::position({}, 0));
    EXPECT_DOUBLE_EQ(CursorSmoother::position({path.begin(), path.begin() + 3}, 2.5)->x, 0.3);
    EXPECT_EQ(CursorSmoother::position({path.front()}, 7)->x, 0.1);
}

TEST(PositionOnAPath, staysFiniteWhereSamplesShareATime) {
    Path const path{{0, {0, 0}}, {1, {0.2, 0}}, {1, {0.6, 0}}, {1, {0.7, 0}}, {2, {1, 1}}};
    EXPECT_EQ(CursorSmoother::position(path, 1)->x, 0.7);
    EXPECT_LT(CursorSmoother::position(path, 0.999)->x, 0.25);
}
