#include "Scenes.h"

#include <cmath>

#include <gtest/gtest.h>

#include <TavaroRender/Kernels/Private/CursorShapes.h>

namespace tavaro {

using namespace scenes;

namespace {

constexpr int side = 100;

CursorUniforms pointer() {
    CursorUniforms u;
    u.canvasSize = {side, side};
    u.position = {50, 50};
    u.cursorSize = 40;
    u.opacity = 1;
    u.fillColor = {1, 1, 1, 1};
    u.strokeColor = {0, 0, 0, 1};
    return u;
}

Image drawnOver(CursorUniforms const& u, int grey, int alpha) {
    Image canvas(side, side);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            auto* p = canvas.row(y) + 4 * x;
            p[0] = p[1] = p[2] = static_cast<std::uint8_t>(grey);
            p[3] = static_cast<std::uint8_t>(alpha);
        }
    Compositor(CompositorBackend::reference).cursorOverlay(u, canvas.view());
    return canvas;
}

}

TEST(CursorOverlay, aPointerAtRestIsCrispAndAMovingOneTrailsBehind) {
    auto u = pointer();
    u.style = CursorShape::filled;
    u.strokeColor.w = 0;
    auto const still = drawnOver(u, 0, 255);
    u.velocity = {30, 0};
    auto const moving = drawnOver(u, 0, 255);
    EXPECT_EQ(at(still, 50, 50).r, 255);
    EXPECT_EQ(at(still, 30, 50).r, 0);
    EXPECT_GT(at(moving, 30, 50).r, 40) << "the trail lies where it came from";
    EXPECT_EQ(at(moving, 70, 50).r, 0) << "and not where it goes";
}

TEST(CursorOverlay, takesThreeToSixteenTapsOnceItTravels) {
    EXPECT_EQ(cursorTaps({1.5f, 0}), 1);
    EXPECT_EQ(cursorTaps({1.6f, 0}), 3);
    EXPECT_EQ(cursorTaps({0, 20}), 10);
    EXPECT_EQ(cursorTaps({300, 400}), 16);
}

TEST(CursorOverlay, theArrowPointsWithItsTip) {
    auto const u = pointer();
    auto const canvas = drawnOver(u, 128, 255);
    EXPECT_EQ(at(canvas, 50 + 6, 50 + 16).r, 255) << "the body lies below and right of the position";
    EXPECT_EQ(at(canvas, 46, 46).r, 128);
    EXPECT_LT(cursorDistance(u, {6, 16}), 0);
    EXPECT_NEAR(cursorDistance(u, {-3, 10}), 3, 1e-4);
    EXPECT_NEAR(cursorDistance(u, {0, -5}), 5, 1e-4);
}

TEST(CursorOverlay, aSpotlightClickOnlyDarkens) {
    CursorUniforms u;
    u.canvasSize = {side, side};
    u.position = {50, 50};
    u.clickEffect = ClickShape::spotlight;
    u.clickRadius = 20;
    u.clickOpacity = 1;
    u.clickColor = {1, 0, 0, 1};
    auto const canvas = drawnOver(u, 200, 90);
    EXPECT_EQ(at(canvas, 50, 50), (Pixel{200, 200, 200, 90})) << "inside 0.7 of the radius nothing changes";
    EXPECT_EQ(at(canvas, 50, 99), (Pixel{90, 90, 90, 90})) << "past 2.2 radii 45% is left";
}

TEST(CursorOverlay, everyEffectAndStyleFadesOutWithItsOpacity) {
    for (int effect = 0; effect <= 5; ++effect)
        for (int style = 0; style <= 6; ++style) {
            auto u = pointer();
            u.style = static_cast<CursorShape>(style);
            u.clickEffect = static_cast<ClickShape>(effect);
            u.clickRadius = 20;
            u.clickColor = {1, 0, 0, 1};
            u.opacity = u.clickOpacity = 0.0009f;
            EXPECT_EQ(difference(drawnOver(u, 100, 50).view(), drawnOver({}, 100, 50).view()).largest, 0)
                << effect << ", " << style;
            u.opacity = u.clickOpacity = 1;
            EXPECT_GT(difference(drawnOver(u, 100, 50).view(), drawnOver({}, 100, 50).view()).largest, 20)
                << effect << ", " << style;
        }
}

TEST(CursorOverlay, theFillRaisesAlphaAndTheOutlineDoesNot) {
    auto u = pointer();
    u.style = CursorShape::filled;
    u.opacity = 0.5f;
    auto const canvas = drawnOver(u, 0, 0);
    EXPECT_EQ(at(canvas, 50, 50).a, 128);
    auto const radius = 12;
    // Just outside the edge there is outline without fill.
    EXPECT_LT(at(canvas, 50 + radius + 1, 50).a, 20);
}

TEST(CursorOverlay, huesGoRoundTheWheel) {
    auto const near = [](Float3 c, float r, float g, float b) {
        return std::abs(c.x - r) + std::abs(c.y - g) + std::abs(c.z - b) < 1e-4f;
    };
    EXPECT_TRUE(near(hueColor(0), 1, 0, 0));
    EXPECT_TRUE(near(hueColor(1.0f / 3), 0, 1, 0));
    EXPECT_TRUE(near(hueColor(-1.0f / 3), 0, 0, 1));
    EXPECT_TRUE(near(hueColor(7.5f), 0, 1, 1));
}

}
