#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Composition/Private/FrameComposer.h>
#include <TavaroRender/Renderer/Private/FrameUniforms.h>

#include <gtest/gtest.h>

#include <cmath>

namespace tavaro {

namespace {

constexpr Size2 hd{1920, 1080};

DemoProject take() {
    DemoProject project;
    project.sourceSize = hd;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 10}};
    auto& metadata = project.metadata.edit();
    metadata.cursorSamples = {{0, {0.5, 0.5}}, {10, {0.5, 0.5}}};
    return project;
}

FrameUniforms uniformsAt(DemoProject const& project, double at, Size2 canvas = hd) {
    return frameUniforms(FrameComposer(project, canvas).state(at), project);
}

TEST(FrameUniforms, aStillMomentLooksTheSameAtEveryTime) {
    auto project = take();
    for (auto const& background :
         {BackgroundStyle{BackgroundStyle::Solid{}}, BackgroundStyle{BackgroundStyle::LinearGradient{}},
          BackgroundStyle{BackgroundStyle::Mesh{.speed = 0, .seed = 3}},
          BackgroundStyle{BackgroundStyle::Aurora{.speed = 0}}}) {
        project.background = background;
        EXPECT_EQ(uniformsAt(project, 1), uniformsAt(project, 2)) << background.displayName();
    }
    project.background = {BackgroundStyle::Aurora{.speed = 0.5}};
    EXPECT_NE(uniformsAt(project, 1), uniformsAt(project, 2));
}

TEST(FrameUniforms, aLinearGradientRunsFromCornerToCornerAtEveryAngle) {
    auto project = take();
    for (double angle = 0; angle < 360; angle += 15) {
        project.background.content = BackgroundStyle::LinearGradient{.angle = angle};
        auto const direction = uniformsAt(project, 0).composite.bgParam;
        EXPECT_NEAR(std::abs(direction.x) + std::abs(direction.y), 1, 1e-6) << angle;
    }
}

TEST(FrameUniforms, radiiAndShadowsGrowWithTheCanvas) {
    auto project = take();
    project.screen = {.padding = 0.05, .cornerRadius = 12, .shadowRadius = 40, .shadowOpacity = 0.5, .borderWidth = 1};
    auto const small = uniformsAt(project, 0).composite;
    auto const large = uniformsAt(project, 0, {3840, 2160}).composite;
    EXPECT_FLOAT_EQ(large.cornerRadius, 2 * small.cornerRadius);
    EXPECT_FLOAT_EQ(large.shadowRadius, 2 * small.shadowRadius);
    EXPECT_FLOAT_EQ(large.borderWidth, 2 * small.borderWidth);
    EXPECT_FLOAT_EQ(large.contentSize.x, 2 * small.contentSize.x);
}

TEST(FrameUniforms, aClickUnderThePointerSharesItsPassAndOneElsewhereTakesItsOwn) {
    auto project = take();
    project.metadata.edit().clicks = {{.t = 1, .position = {0.5, 0.5}}, {.t = 5, .position = {0.2, 0.5}}};
    EXPECT_EQ(uniformsAt(project, 0.5).cursorPasses, 1);
    auto const shared = uniformsAt(project, 1.2);
    EXPECT_EQ(shared.cursorPasses, 1);
    EXPECT_EQ(shared.cursor[0].clickEffect, ClickShape::ripple);
    EXPECT_GT(shared.cursor[0].opacity, 0);
    auto const apart = uniformsAt(project, 5.2);
    ASSERT_EQ(apart.cursorPasses, 2);
    EXPECT_EQ(apart.cursor[0].opacity, 0) << "the click lies beneath the pointer";
    EXPECT_EQ(apart.cursor[1].clickEffect, ClickShape::none);
    project.cursor.isVisible = false;
    EXPECT_EQ(uniformsAt(project, 0.5).cursorPasses, 0);
}

TEST(FrameUniforms, aMovingCameraSmearsAlongItsWayAndAHeldOneDoesNot) {
    auto project = take();
    project.zoomEvents = {{.start = 1, .duration = 5, .center = {0.9, 0.5}, .scale = 2, .motionBlur = 1}};
    auto const moving = uniformsAt(project, 1.3).composite;
    EXPECT_GT(moving.blurVector.x, 0);
    EXPECT_EQ(moving.blurVector.y, 0);
    EXPECT_GE(moving.blurTaps, 3);
    EXPECT_EQ(uniformsAt(project, 3).composite.blurStrength, 0);
}

TEST(FrameUniforms, aDeviceFrameAndTheShadowGoBitByBitOnTheWayToASplit) {
    auto project = take();
    project.cameraAsset = "camera.mp4";
    project.screen = {.padding = 0.05, .shadowRadius = 40, .shadowOpacity = 0.5, .frame = DeviceFrame::iphone};
    project.layoutCues = {{.time = 2, .scene = SceneLayout::split}};
    auto last = uniformsAt(project, 1.9).composite;
    EXPECT_EQ(last.frameMode, FrameMode::iphone);
    EXPECT_FLOAT_EQ(last.shadowOpacity, 0.5f);
    for (double t = 2; t < 2.6; t += 1 / 120.0) {
        auto const now = uniformsAt(project, t).composite;
        EXPECT_LE(now.frameRadius, last.frameRadius + 1e-3f) << t;
        EXPECT_LT(last.frameRadius - now.frameRadius, 12) << t;
        EXPECT_LE(now.shadowOpacity, last.shadowOpacity + 1e-6f) << t;
        EXPECT_LT(last.shadowOpacity - now.shadowOpacity, 0.05f) << t;
        last = now;
    }
    EXPECT_EQ(last.frameMode, FrameMode::none);
    EXPECT_EQ(last.shadowOpacity, 0);
}

TEST(FrameUniforms, aTitleCardHidesTheRecording) {
    auto project = take();
    project.intro = TitleCard{.text = "Hi", .duration = 2};
    auto const card = uniformsAt(project, 1);
    EXPECT_EQ(card.composite.clipSize, Float2{});
    EXPECT_EQ(card.cursorPasses, 0);
    EXPECT_NE(uniformsAt(project, 2).composite.clipSize, Float2{});
}

}

}
