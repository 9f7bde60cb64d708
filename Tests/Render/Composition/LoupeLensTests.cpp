#include <TavaroRender/Composition/Private/LoupeLens.h>

#include <gtest/gtest.h>

namespace tavaro {

namespace {

/// What the compositor's lens samples at a radius: the inverse of what `seen` answers.
double sampledDistance(double magnification, double radius) {
    double const t = std::clamp((radius - 0.78) / 0.22, 0.0, 1.0);
    return radius / (magnification + (1 - magnification) * t * t * (3 - 2 * t));
}

TEST(LoupeLens, aPointIsDrawnWhereTheGlassShowsIt) {
    for (double const magnification : {1.2, 2.0, 6.0}) {
        LoupeLens const lens{{500, 300}, 200, magnification, 1};
        for (double radius = 0.01; radius < 1; radius += 0.013) {
            CanvasPoint const below{500 + 200 * 0.6 * sampledDistance(magnification, radius),
                                    300 - 200 * 0.8 * sampledDistance(magnification, radius)};
            auto const seen = lens.seen(below);
            EXPECT_NEAR(seen.x, 500 + 200 * 0.6 * radius, 0.01) << magnification << " at " << radius;
            EXPECT_NEAR(seen.y, 300 - 200 * 0.8 * radius, 0.01) << magnification << " at " << radius;
        }
    }
}

TEST(LoupeLens, pointsOutsideAtTheCentreAndUnderAHiddenLensStay) {
    LoupeLens const lens{{500, 300}, 200, 2, 1};
    CanvasPoint const outside{701, 300};
    CanvasPoint const under{510, 310};
    EXPECT_EQ(lens.seen(outside), outside);
    EXPECT_EQ(lens.seen({500, 300}), (CanvasPoint{500, 300}));
    EXPECT_EQ((LoupeLens{{500, 300}, 200, 2, 0}.seen(under)), under);
    EXPECT_EQ((LoupeLens{{500, 300}, 0, 2, 1}.seen(under)), under);
    EXPECT_EQ((LoupeLens{{500, 300}, 200, 1, 1}.seen(under)), under);
}

}

}
