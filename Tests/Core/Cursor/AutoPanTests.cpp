#include <TavaroCore/Cursor/AutoPan.h>

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace tavaro;

namespace {

std::vector<CursorSample> moving(std::vector<UnitPoint2> const& points) {
    std::vector<CursorSample> samples;
    for (std::size_t i = 0; i < points.size(); ++i) samples.push_back({static_cast<double>(i) / 60, points[i]});
    return samples;
}

std::vector<CursorSample> wandering(std::size_t count) {
    std::vector<UnitPoint2> points;
    for (std::size_t i = 0; i < count; ++i) {
        double const a = static_cast<double>(i) * 0.05;
        points.push_back({0.5 + 0.6 * std::sin(a), 0.5 + 0.6 * std::cos(a * 1.7)}); // leaves the frame now and then
    }
    return moving(points);
}

}

TEST(AutoPan, restsInsideTheDeadZoneAndThenKeepsThePointerAtItsEdge) {
    // Half of the frame is visible: centres lie in 0.25…0.75, and the dead zone reaches 0.1 around the centre.
    auto const path = AutoPan(0.4, 0).path(
        moving({{0.5, 0.5}, {0.6, 0.42}, {0.68, 0.5}, {0.6, 0.3}, {0.45, 0.5}, {0.95, 0.02}}), {0.5, 0.5});
    std::vector<UnitPoint2> const expected{{0.5, 0.5}, {0.5, 0.5}, {0.58, 0.5}, {0.58, 0.4}, {0.55, 0.4}, {0.75, 0.25}};
    ASSERT_EQ(path.size(), expected.size());
    for (std::size_t i = 0; i < path.size(); ++i) {
        EXPECT_NEAR(path[i].position.distance(expected[i]), 0, 1e-12) << i;
        EXPECT_EQ(path[i].t, static_cast<double>(i) / 60);
    }
}

TEST(AutoPan, anAxisThatShowsTheWholeFrameStaysInTheMiddle) {
    for (double whole : {1.0, 1.7, 0.9999}) {
        for (auto const& point : AutoPan(0.44, 0.85).path(wandering(200), {whole, 0.5})) {
            EXPECT_EQ(point.position.x, 0.5);
        }
    }
}

TEST(AutoPan, theVisiblePartNeverLeavesTheFrame) {
    for (double visible : {0.0, 0.01, 0.3, 0.8}) {
        double const half = visible <= 0.01 ? 0.005 : visible / 2;
        for (auto const& [t, position, kind] : AutoPan(0.44, 0.85).path(wandering(300), {visible, 0.5})) {
            EXPECT_TRUE(position.x >= half && position.x <= 1 - half) << visible << " at " << t;
            EXPECT_TRUE(position.y >= 0.25 && position.y <= 0.75) << visible << " at " << t;
        }
    }
}

TEST(AutoPan, smoothingOutOfRangeCountsAsItsLimit) {
    auto const cursor = wandering(100);
    auto const positions = [&](double deadZone, double smoothing) {
        return AutoPan(deadZone, smoothing).path(cursor, {0.4, 0.4});
    };
    EXPECT_EQ(positions(0.44, 3), positions(0.44, 1));
    EXPECT_EQ(positions(0.44, -1), positions(0.44, 0));
    EXPECT_EQ(positions(8, 0.5), positions(0.95, 0.5));
    EXPECT_NE(positions(0.44, 1), positions(0.44, 0));
    EXPECT_TRUE(AutoPan(0.44, 0.85).path({}, {0.5, 0.5}).empty());
}
