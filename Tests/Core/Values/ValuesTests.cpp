#include <TavaroCore/Records/Hash.h>
#include <TavaroCore/Values/Easing.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroCore/Values/RGBAColor.h>
#include <TavaroCore/Values/TimeRange.h>
#include <TavaroCore/Values/Timecode.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace tavaro;
using Timecode::Fraction;

namespace {

void expectNear(NormalizedRect const& a, NormalizedRect const& b) {
    EXPECT_NEAR(a.x, b.x, 1e-12);
    EXPECT_NEAR(a.y, b.y, 1e-12);
    EXPECT_NEAR(a.width, b.width, 1e-12);
    EXPECT_NEAR(a.height, b.height, 1e-12);
}

}

TEST(TimeRange, itsStartBelongsToItAndItsEndDoesNot) {
    TimeRange const range{2, 3};
    EXPECT_TRUE(range.contains(2));
    EXPECT_FALSE(range.contains(5));
    EXPECT_FALSE((TimeRange{0, 1}).intersects({1, 1}));
    EXPECT_TRUE((TimeRange{0, 1.5}).intersects({1, 1}));
}

TEST(TimeRange, progressIsClampedAndARangeWithoutLengthIsPassedAtItsStart) {
    EXPECT_EQ((TimeRange{2, 4}).progress(3), 0.25);
    EXPECT_EQ((TimeRange{2, 4}).progress(-1), 0);
    EXPECT_EQ((TimeRange{2, 4}).progress(9), 1);
    EXPECT_EQ((TimeRange{2, 0}).progress(2), 1);
    EXPECT_EQ((TimeRange{2, -1}).progress(1.9), 0);
}

TEST(TimeRange, aUnionHoldsBothAndIsNeverNegative) {
    EXPECT_EQ((TimeRange{1, 1}).unionWith({4, 2}), (TimeRange{1, 5}));
    EXPECT_EQ((TimeRange{1, -3}).unionWith({2, -5}), (TimeRange{1, 0}));
}

TEST(NormalizedRect, insetGrowsInsideTheUnitSquare) {
    expectNear(NormalizedRect{0.05, 0.5, 0.2, 0.6}.inset(0.1, 0.1), {0, 0.4, 0.35, 0.6});
    expectNear(NormalizedRect{0.4, 0.4, 0.1, 0.1}.inset(-0.2, 0), {0.6, 0.4, 0, 0.1});
}

TEST(NormalizedRect, overlapsAreMeasuredAsShares) {
    NormalizedRect const a{0, 0, 0.4, 0.4};
    EXPECT_NEAR(a.intersectionOverUnion({0.2, 0, 0.4, 0.4}), 1 / 3.0, 1e-12);
    EXPECT_EQ(a.intersectionOverUnion({0.5, 0.5, 0.1, 0.1}), 0);
    EXPECT_EQ((NormalizedRect{}).intersectionOverUnion({}), 0);
    EXPECT_EQ((NormalizedRect{0, 0, -1, 3}).area(), 0);
    EXPECT_EQ(a.unionWith({0.5, -0.25, 0.5, 0.25}), (NormalizedRect{0, -0.25, 1, 0.65}));
}

TEST(NormalizedRect, bothEdgesCountAsInsideAndSlackBridgesAGap) {
    NormalizedRect const a{0.25, 0.25, 0.5, 0.5};
    EXPECT_TRUE(a.contains({0.75, 0.25}));
    EXPECT_FALSE(a.contains({0.7501, 0.25}));
    EXPECT_TRUE(a.touches({0.75, 0.75, 0.1, 0.1}, 0));
    EXPECT_FALSE(a.touches({0.8, 0.5, 0.1, 0.1}, 0.04));
    EXPECT_TRUE(a.touches({0.8, 0.5, 0.1, 0.1}, 0.06));
    EXPECT_FALSE(a.touches({0.5, 0.9, 0.1, 0.1}, 0.06)) << "near on one axis only";
}

TEST(Size2, eveningLosesOnePixelTowardZero) {
    EXPECT_EQ((Size2{1921, 1080}).evened(), (Size2{1920, 1080}));
    EXPECT_EQ((Size2{-3, 1}).evened(), (Size2{-2, 0}));
}

TEST(RGBAColor, hexIsRoundedClampedAndReadsBack) {
    EXPECT_EQ((RGBAColor{1.5, -1, 0.5, 0.2}).hex(), "#FF0080");
    auto const colour = RGBAColor::fromHex("#3b82F6");
    ASSERT_TRUE(colour);
    EXPECT_EQ(colour->hex(), "#3B82F6");
    EXPECT_EQ(colour->a, 1);
    EXPECT_EQ(RGBAColor::fromHex("3B82F6"), colour);
    for (auto const* bad : {"", "#", "#12345", "#1234567", "12345G", "##12345", "+12345", "-12345", " 12345"}) {
        EXPECT_FALSE(RGBAColor::fromHex(bad)) << bad;
    }
}

TEST(Easing, everyCurveRunsFromZeroToOneAndClampsItsTime) {
    for (auto const easing : allCases<Easing>()) {
        EXPECT_EQ(apply(easing, 0), 0) << nameOf(easing);
        EXPECT_NEAR(apply(easing, 1), 1, 1e-12) << nameOf(easing);
        EXPECT_EQ(apply(easing, -3), apply(easing, 0)) << nameOf(easing);
        EXPECT_EQ(apply(easing, 7), apply(easing, 1)) << nameOf(easing);
    }
    EXPECT_EQ(apply(Easing::smooth, 0.5), 0.5);
    EXPECT_EQ(apply(Easing::easeIn, 0.5), 0.125);
    EXPECT_EQ(apply(Easing::easeOut, 0.5), 0.875);
    EXPECT_NEAR(apply(Easing::spring, 0.5), 1 + std::exp2(-4.5) * std::sin(4.25 * 6.981317007977318), 1e-12);
    EXPECT_NEAR(apply(Easing::anticipate, 0.25), 0.25 * (3.5949095 * 0.5 - 2.5949095) / 2, 1e-12);
    EXPECT_NEAR(apply(Easing::anticipate, 0.75), (0.25 * (3.5949095 * -0.5 + 2.5949095) + 2) / 2, 1e-12);
}

TEST(Timecode, showsHoursOnlyWhenThereAreAny) {
    EXPECT_EQ(Timecode::format(65), "1:05");
    EXPECT_EQ(Timecode::format(3599.99), "59:59");
    EXPECT_EQ(Timecode::format(3600), "1:00:00");
    EXPECT_EQ(Timecode::format(3725.5, Fraction::hundredths), "1:02:05.50");
    EXPECT_EQ(Timecode::format(0.29, Fraction::hundredths), "0:00.29") << "0.29 × 100 is a little below 29";
    EXPECT_EQ(Timecode::format(1.9999999, Fraction::hundredths), "0:01.99");
    EXPECT_EQ(Timecode::format(65.5, Fraction::frames, 30), "1:05.15");
    for (double bad : {-1.0, -0.001, std::nan(""), std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(Timecode::format(bad, Fraction::hundredths), "0:00");
    }
}

TEST(Timecode, stepsStayOnTheFrameGridInsideTheEdit) {
    EXPECT_DOUBLE_EQ(Timecode::stepped(1.0, 1, 30, 10), 31.0 / 30);
    EXPECT_DOUBLE_EQ(Timecode::stepped(1.01, 1, 30, 10), 31.0 / 30) << "from within frame 30";
    EXPECT_EQ(Timecode::stepped(0.05, -9, 30, 10), 0);
    EXPECT_EQ(Timecode::stepped(3, 1, 0, 10), 4) << "a rate below 1 counts as 1";
    for (double duration : {0.0, 0.01, 1.0, 2.5, 9.999}) {
        for (int n : {0, 1, 50, 5000}) {
            double const t = Timecode::stepped(duration, n, 30, duration);
            EXPECT_TRUE(t == 0 || t < duration) << duration << " + " << n;
        }
    }
}
