#include <TavaroCore/Cursor/CursorSmoother.h>
#include <TavaroCore/Recording/SettledPointer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

using namespace tavaro;

namespace {

constexpr double pixel = 1.0 / 1920;

/// A pointer that rests, moves, rests again, and clicks in some of its rests.
struct Hand {
    struct Rest {
        double from = 0;
        double until = 0;
        UnitPoint2 position;
    };
    std::vector<Rest> rests;
    RecordingMetadata log; // samples where it moves, and nowhere else

    double seconds() const { return rests.back().until; }
};

Hand hand(unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> unit(0, 1);
    double const rate = 30 + 100 * unit(random); // samples a second
    Hand made;
    double t = 0;
    UnitPoint2 position{unit(random), unit(random)};
    made.log.cursorSamples = {{0, position}};
    for (int i = 0; i < 12; ++i) {
        double const rest = 0.8 + 6 * unit(random);
        made.rests.push_back({t, t + rest, position});
        if (i % 3 != 1) made.log.clicks.push_back({.t = t + rest * (0.2 + 0.6 * unit(random)), .position = position});
        t += rest;
        auto const from = position;
        position = {unit(random), unit(random)};
        int const steps = 8 + static_cast<int>(rate * 0.6 * unit(random));
        for (int step = 1; step <= steps && i < 11; ++step) {
            double const done = 0.5 - 0.5 * std::cos(M_PI * step / steps);
            t += 1 / rate;
            made.log.cursorSamples.push_back({t, UnitPoint2::lerp(from, position, done)});
        }
    }
    return made;
}

double apart(UnitPoint2 const& a, UnitPoint2 const& b) { return std::hypot(a.x - b.x, a.y - b.y); }

bool isAscending(std::vector<CursorSample> const& samples) {
    return std::ranges::is_sorted(samples, [](auto const& a, auto const& b) { return a.t < b.t; }) &&
           std::ranges::adjacent_find(samples, {}, &CursorSample::t) == samples.end();
}

}

TEST(SettledPointer, aSmoothedPointerIsAtItsClicksAndRestsBetweenItsMoves) {
    for (unsigned seed = 1; seed <= 30; ++seed) {
        auto made = hand(seed);
        settlePointer(made.log, made.seconds());
        ASSERT_TRUE(isAscending(made.log.cursorSamples)) << "seed " << seed;
        for (double const amount : {0.0, 0.4, 1.0}) {
            auto const path = CursorSmoother(amount, 0.09).smooth(made.log.cursorSamples, made.log.clicks);
            for (auto const& click : made.log.clicks)
                EXPECT_LT(apart(*CursorSmoother::position(path, click.t), click.position), pixel) << "seed " << seed;
            for (auto const& rest : made.rests) {
                // What is smoothed leaves a little early and arrives a little late.
                for (double t = rest.from + 0.45; t < rest.until - 0.45; t += 0.05)
                    EXPECT_LT(apart(*CursorSmoother::position(path, t), rest.position), pixel)
                        << "seed " << seed << ", smoothing " << amount << ", " << t - rest.from << " s into a rest of "
                        << rest.until - rest.from;
            }
        }
    }
}

TEST(SettledPointer, aLogOfAFewPlacesMovesFromEachToTheNextAsAHandDoes) {
    RecordingMetadata log;
    log.cursorSamples = {{0, {0.5, 0.5}}, {5, {0.2, 0.5}}};
    log.clicks = {{.t = 5.1, .position = {0.2, 0.5}}, {.t = 9, .position = {0.9, 0.9}}};
    settlePointer(log, 20);
    EXPECT_EQ(log.cursorPosition(4.5)->x, 0.5);
    EXPECT_NEAR(log.cursorPosition(4.85)->x, 0.35, 0.02) << "half way";
    EXPECT_EQ(log.cursorPosition(5.1)->x, 0.2);
    EXPECT_EQ(log.cursorPosition(8.4)->x, 0.2);
    EXPECT_EQ(log.cursorPosition(9), (UnitPoint2{0.9, 0.9}));
    EXPECT_EQ(log.cursorSamples.back().t, 9) << "the log gets no longer";
}

TEST(SettledPointer, aPathThatWasSampledAllAlongIsOnlyBentToItsClicks) {
    for (double const rate : {8.0, 30.0, 60.0, 120.0}) {
        RecordingMetadata log;
        for (int i = 0; i < 300; ++i) {
            double const t = i / rate;
            log.cursorSamples.push_back({t, {0.5 + 0.4 * std::sin(t), 0.5 + 0.4 * std::cos(t)}});
        }
        log.clicks = {{.t = 10.5 / rate, .position = {0.9, 0.1}}, {.t = 20 / rate, .position = {0.1, 0.1}}};
        auto const before = log.cursorSamples;
        settlePointer(log, 1000);
        EXPECT_EQ(log.cursorSamples.size(), before.size() + 1) << rate << ": a sample at the click's time becomes it";
        ASSERT_TRUE(isAscending(log.cursorSamples));
        for (auto const& click : log.clicks) EXPECT_EQ(log.cursorPosition(click.t), click.position) << rate;
    }
}

TEST(SettledPointer, allSamplesInTheMomentOfAClickBecomeIt) {
    RecordingMetadata log;
    log.cursorSamples = {{0, {0.1, 0.1}}, {2.0002, {0.9, 0.9}}, {2.0004, {0.8, 0.8}}, {2.1, {0.3, 0.3}}};
    log.clicks = {{.t = 2, .position = {0.2, 0.2}}};
    settlePointer(log, 20);
    EXPECT_TRUE(isAscending(log.cursorSamples));
    EXPECT_LT(log.cursorPosition(2.0004)->x, 0.21);
}

TEST(SettledPointer, noLogGrowsBeyondSixtySamplesForEachSecondOfTheRecording) {
    RecordingMetadata log;
    for (int i = 0; i < 10'000; ++i) log.cursorSamples.push_back({i * 0.9, {i % 2 * 1.0, 0}});
    log.cursorSamples.push_back({1e300, {}});
    settlePointer(log, 60);
    EXPECT_LE(log.cursorSamples.size(), 10'001u + 62 * 60);
    RecordingMetadata empty;
    empty.clicks = {{.t = 1}};
    settlePointer(empty, 60);
    EXPECT_TRUE(empty.cursorSamples.empty()) << "no pointer where none was logged";
}
