#include "AllocationCount.h"

#include <TavaroCore/Zoom/LoupeResolver.h>
#include <TavaroCore/Zoom/ZoomResolver.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

using namespace tavaro;

namespace {

ZoomEvent zoom(double start, double duration, UnitPoint2 center = UnitPoint2::center, double scale = 2) {
    return {.start = start,
            .duration = duration,
            .rampIn = 0.5,
            .rampOut = 0.5,
            .center = center,
            .scale = scale,
            .motionBlur = 0.5};
}

ZoomEvent loupe(double start, double duration, double scale = 2) {
    auto event = zoom(start, duration, {0.3, 0.6}, scale);
    event.style = ZoomStyle::loupe;
    event.easing = Easing::linear;
    return event;
}

std::vector<ZoomEvent> randomEvents(std::mt19937& random, std::size_t count) {
    std::uniform_real_distribution<double> unit(0, 1);
    std::vector<ZoomEvent> events(count);
    for (auto& event : events) {
        event = zoom(unit(random) * 20, unit(random) * 6, {unit(random), unit(random)}, 1 + 2 * unit(random));
        event.rampIn = unit(random) * 2;
        event.rampOut = unit(random) * 2;
        event.easing = static_cast<Easing>(random() % namesOf(Easing{}).size());
        event.style = static_cast<ZoomStyle>(random() % 2);
        event.motionBlur = 2 * unit(random);
    }
    return events;
}

}

TEST(ZoomResolver, anEventContributesNothingAtItsVeryEnds) {
    auto event = zoom(2, 3);
    event.rampIn = event.rampOut = 0; // full weight right inside
    std::vector const events{event};
    EXPECT_EQ(ZoomResolver::resolve(events, 2), CameraState::identity);
    EXPECT_EQ(ZoomResolver::resolve(events, 5), CameraState::identity);
    EXPECT_EQ(ZoomResolver::resolve(events, std::nextafter(2, 3)).scale, 2);
    EXPECT_EQ(ZoomResolver::resolve(events, std::nextafter(5, 4)).scale, 2);
    EXPECT_EQ(ZoomResolver::resolve({}, 1), CameraState::identity);
}

TEST(ZoomResolver, rampsThatDoNotFitMeetAtTheEndOfTheRampIn) {
    auto event = zoom(0, 1);
    event.rampIn = 0.8;
    event.rampOut = 0.6;
    event.easing = Easing::linear;
    EXPECT_DOUBLE_EQ(presence(event, 0.4), 0.5);
    EXPECT_DOUBLE_EQ(presence(event, 0.8), 1);
    EXPECT_DOUBLE_EQ(presence(event, 0.95), 1 - 0.15 / 0.6);
    event.rampOut = 0;
    EXPECT_EQ(presence(event, 0.999), 1);
}

TEST(ZoomResolver, theRampOutMirrorsTheCurve) {
    for (std::size_t i = 0; i < namesOf(Easing{}).size(); ++i) {
        auto event = zoom(0, 4);
        event.rampIn = event.rampOut = 1;
        event.easing = static_cast<Easing>(i);
        for (double p : {0.1, 0.25, 0.5, 0.9}) {
            EXPECT_NEAR(presence(event, p), apply(event.easing, p), 1e-12) << i;
            EXPECT_NEAR(presence(event, 3 + p), 1 - apply(event.easing, p), 1e-12) << i;
        }
    }
}

TEST(ZoomResolver, theVisibleWindowStaysInsideTheFrame) {
    auto const state = ZoomResolver::resolve(std::vector{zoom(0, 4, {0.1, 0.9})}, 2);
    EXPECT_EQ(state.center, (UnitPoint2{0.25, 0.75}));
    EXPECT_EQ(state.scale, 2);
    EXPECT_EQ(state.motionBlur, 0.5);
    EXPECT_EQ(state.velocity, 0);

    for (unsigned seed = 1; seed <= 20; ++seed) {
        std::mt19937 random(seed);
        auto const events = randomEvents(random, 12);
        for (double t = 0; t < 26; t += 0.05) {
            auto const [scale, center, blur, velocity] = ZoomResolver::resolve(events, t);
            double const half = scale > 1 ? 0.5 / scale : 0.5;
            EXPECT_TRUE(center.x >= half && center.x <= 1 - half && center.y >= half && center.y <= 1 - half)
                << "seed " << seed << " t " << t;
            EXPECT_TRUE(blur >= 0 && blur <= 1) << "seed " << seed << " t " << t;
        }
    }
}

TEST(ZoomResolver, overlappingZoomsAddTheirMagnificationsAndShareTheCentre) {
    std::vector events{zoom(0, 4, {0.3, 0.5}), zoom(1, 4, {0.6, 0.4})};
    auto const both = ZoomResolver::resolve(events, 2);
    EXPECT_DOUBLE_EQ(both.scale, 3);
    EXPECT_NEAR(both.center.x, 0.45, 1e-12);
    EXPECT_NEAR(both.center.y, 0.45, 1e-12);

    events[1].easing = Easing::linear; // a quarter present at 1.125
    events[1].motionBlur = 1;
    auto const rising = ZoomResolver::resolve(events, 1.125);
    EXPECT_DOUBLE_EQ(rising.scale, 1 + 1 + 0.25);
    EXPECT_NEAR(rising.center.x, (0.3 + 0.6 * 0.25) / 1.25, 1e-12);
    EXPECT_DOUBLE_EQ(rising.motionBlur, 0.5);
}

TEST(ZoomResolver, aSpringPassesOneAndADipBelowZeroIsSkipped) {
    auto event = zoom(0, 4);
    event.rampIn = 1;
    event.motionBlur = 1;
    event.easing = Easing::spring;
    double const jump = apply(Easing::spring, 0.1);
    ASSERT_GT(jump, 1.5);
    auto const state = ZoomResolver::resolve(std::vector{event}, 0.1);
    EXPECT_DOUBLE_EQ(state.scale, 1 + jump);
    EXPECT_EQ(state.motionBlur, 1);

    event.easing = Easing::anticipate;
    ASSERT_LT(apply(Easing::anticipate, 0.2), 0);
    EXPECT_EQ(ZoomResolver::resolve(std::vector{event}, 0.2), CameraState::identity);
}

TEST(ZoomResolver, aCentreProviderAnswersForEveryPresentEvent) {
    auto following = zoom(0, 4, {0.9, 0.9});
    following.followsCursor = true;
    auto const events = std::vector{following, zoom(10, 4, {0.4, 0.4})};
    auto const path = [](ZoomEvent const& event, double at) {
        return event.followsCursor ? UnitPoint2{at / 4, 0.5} : event.center;
    };
    EXPECT_EQ(ZoomResolver::resolve(events, 2, path).center, (UnitPoint2{0.5, 0.5}));
    EXPECT_EQ(ZoomResolver::resolve(events, 12, path).center, (UnitPoint2{0.4, 0.4}));
}

TEST(ZoomResolver, velocityMeasuresTheLastStep) {
    auto event = zoom(0, 8, {0.4, 0.5});
    event.easing = Easing::linear;
    event.rampIn = 4; // scale grows by 0.25 a second
    std::vector const events{event};
    auto const moving = ZoomResolver::resolveWithVelocity(events, 2, 0.5);
    auto const before = ZoomResolver::resolve(events, 1.5);
    auto const now = ZoomResolver::resolve(events, 2);
    EXPECT_NEAR(moving.velocity, 0.25 * 0.8 + now.center.distance(before.center) / 0.5 * 2.5, 1e-12);
    EXPECT_EQ(moving.scale, now.scale);
    EXPECT_EQ(ZoomResolver::resolveWithVelocity(events, 6, 1.0 / 60).velocity, 0);
    EXPECT_EQ(ZoomResolver::resolveWithVelocity(events, 2, 0).velocity, 0);
    EXPECT_EQ(ZoomResolver::resolveWithVelocity(std::vector{zoom(0, 8, {0, 0}, 40)}, 0.2, 1.0 / 60).velocity, 1);
}

TEST(ZoomResolver, resolvingNeverAllocates) {
    std::mt19937 random(7);
    auto const events = randomEvents(random, 200);
    UnitPoint2 const target{0.2, 0.2};
    auto const follow = [&](ZoomEvent const& event, double) { return event.isLoupe() ? event.center : target; };
    double sum = 0;
    long const before = allocationCount();
    for (double t = 0; t < 26; t += 0.25) {
        sum += ZoomResolver::resolveWithVelocity(events, t, 1.0 / 60, follow).scale;
        sum += ZoomResolver::resolve(events, t).scale;
        if (auto const lens = LoupeResolver::resolve(events, t, follow)) sum += lens->radius;
    }
    EXPECT_EQ(allocationCount() - before, 0);
    EXPECT_GT(sum, 0);
    auto const copy = events;
    EXPECT_EQ(allocationCount() - before, 1) << "the counter must see allocations, " << copy.size();
}

TEST(LoupeResolver, theLensGrowsInFromABitMoreThanHalfItsSize) {
    std::vector const events{loupe(0, 4)};
    EXPECT_FALSE(LoupeResolver::resolve(events, 0.00025)); // presence 0.0005
    auto const small = LoupeResolver::resolve(events, 0.001);
    ASSERT_TRUE(small);
    EXPECT_NEAR(small->radius, 0.17 * (0.55 + 0.45 * 0.002), 1e-12);
    auto const half = LoupeResolver::resolve(events, 0.25);
    ASSERT_TRUE(half);
    EXPECT_DOUBLE_EQ(half->magnification, 1.5);
    EXPECT_DOUBLE_EQ(half->presence, 0.5);
    EXPECT_EQ(half->center, (UnitPoint2{0.3, 0.6}));
    EXPECT_DOUBLE_EQ(LoupeResolver::resolve(events, 2)->radius, 0.17);
}

TEST(LoupeResolver, lensesNeverBlendAndTheEarlierOfEqualsIsShown) {
    std::vector events{loupe(0, 4, 2), loupe(1, 4, 3)};
    EXPECT_EQ(LoupeResolver::resolve(events, 1.25)->magnification, 2);
    EXPECT_EQ(LoupeResolver::resolve(events, 2)->magnification, 2);
    EXPECT_EQ(LoupeResolver::resolve(events, 3.9)->magnification, 3);
}

TEST(LoupeResolver, camerasAndLensesIgnoreEachOther) {
    std::vector const events{zoom(0, 4), loupe(0, 4, 5)};
    EXPECT_EQ(ZoomResolver::resolve(events, 2).scale, 2);
    EXPECT_EQ(LoupeResolver::resolve(events, 2)->magnification, 5);
    EXPECT_FALSE(LoupeResolver::resolve(std::vector{zoom(0, 4)}, 2));
}
