#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Composition/Private/ClickLook.h>
#include <TavaroRender/Composition/Private/FrameComposer.h>

#include <gtest/gtest.h>

#include <cmath>

namespace tavaro {

namespace {

constexpr Size2 hd{1920, 1080};

/// Ten seconds of recording in one clip; the pointer crosses the frame along its middle once a second per 0.1.
DemoProject take() {
    DemoProject project;
    project.sourceSize = hd;
    project.canvas = hd;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 10}};
    auto& metadata = project.metadata.edit();
    metadata.captureSize = hd;
    for (int i = 0; i <= 600; ++i) metadata.cursorSamples.push_back({i / 60.0, {i / 600.0, 0.5}});
    return project;
}

FrameState stateOf(DemoProject const& project, double at) { return FrameComposer(project, hd).state(at); }

TEST(FrameComposer, thePointerLiesOverTheSamePixelOfTheRecordingThroughZoomCropAndPadding) {
    auto project = take();
    project.screen.padding = 0.1;
    project.sourceCrop = NormalizedRect{0.25, 0.25, 0.5, 0.5};
    project.zoomEvents = {{.start = 0, .duration = 10, .rampIn = 0, .rampOut = 0, .center = {0.5, 0.5}, .scale = 2}};
    auto const state = stateOf(project, 5.0);
    EXPECT_EQ(state.sourceSize, (Size2{960, 540}));
    EXPECT_NEAR(state.camera.center.x, 0.5, 1e-9) << "the zoom's focus moves into the crop as well";
    EXPECT_NEAR(state.cursorCanvasPoint.x, 960, 1e-6);
    EXPECT_NEAR(state.cursorCanvasPoint.y, 540, 1e-6);
    auto const later = stateOf(project, 5.5); // 5 % of the frame on, 10 % of the crop, 20 % of what the zoom shows
    EXPECT_NEAR(later.cursorCanvasPoint.x, 960 + 0.2 * 1536, 1e-3);
    EXPECT_EQ(later.cursorOpacity, 1);
}

TEST(FrameComposer, thePointerFadesWhereAZoomLeavesItBehind) {
    auto project = take();
    project.zoomEvents = {{.start = 0, .duration = 10, .rampIn = 0, .rampOut = 0, .center = {0.25, 0.5}, .scale = 2}};
    EXPECT_EQ(stateOf(project, 4.9).cursorOpacity, 1);
    EXPECT_EQ(stateOf(project, 6.0).cursorOpacity, 0);
}

TEST(FrameComposer, clipsShowTheirSourceAtTheirSpeedAndThePointerOfThatMoment) {
    auto project = take();
    project.timeline.clips = {{.asset = "screen.mp4", .start = 0, .sourceStart = 6, .duration = 1, .speed = 2},
                              {.asset = "screen.mp4", .start = 1, .sourceStart = 1, .duration = 2, .speed = 0.5}};
    FrameComposer const composer(project, hd);
    auto const fast = composer.state(0.5);
    EXPECT_EQ(fast.source->asset, "screen.mp4");
    EXPECT_DOUBLE_EQ(fast.source->time, 7);
    EXPECT_NEAR(fast.cursorPosition->x, 0.7, 1e-9);
    auto const slow = composer.state(2);
    EXPECT_EQ(slow.source->asset, "screen.mp4");
    EXPECT_DOUBLE_EQ(slow.source->time, 1.5);
    EXPECT_DOUBLE_EQ(composer.duration(), 3);
}

TEST(FrameComposer, noPointerSmearsAcrossACut) {
    auto project = take();
    project.cursor.motionBlur = 1;
    project.timeline.clips = {{.asset = "screen.mp4", .start = 0, .sourceStart = 0, .duration = 2},
                              {.asset = "screen.mp4", .start = 2, .sourceStart = 8, .duration = 1},
                              {.asset = "screen.mp4", .start = 3, .sourceStart = 9, .duration = 1}};
    FrameComposer const composer(project, hd);
    double const perShutter = 1920 * 0.1 / 60;
    EXPECT_NEAR(composer.state(1).cursorBlur.x, perShutter, 0.01);
    EXPECT_EQ(composer.state(2.001).cursorBlur, CanvasPoint{});
    EXPECT_NEAR(composer.state(3.001).cursorBlur.x, perShutter, 0.01) << "a split is not a cut";
}

TEST(FrameComposer, aPointerThatRestsHidesAndIsBackBeforeItMoves) {
    auto project = take();
    project.cursor.idleHideAfter = 1;
    auto& samples = project.metadata.edit().cursorSamples;
    samples.clear();
    for (int i = 0; i <= 600; ++i) samples.push_back({i / 60.0, {i < 60 ? i / 60.0 : i < 480 ? 1 : 0.5, 0.5}});
    FrameComposer const composer(project, hd);
    EXPECT_EQ(composer.state(1.5).cursorOpacity, 1);
    EXPECT_EQ(composer.state(5).cursorOpacity, 0);
    EXPECT_NEAR(composer.state(7.999).cursorOpacity, 1, 0.01);
    project.cursor.isVisible = false;
    EXPECT_EQ(stateOf(project, 1).cursorOpacity, 0);
}

TEST(FrameComposer, aPointerThatLoopsEndsWhereItBegan) {
    auto project = take();
    project.cursor.loops = true;
    FrameComposer const composer(project, hd);
    EXPECT_NEAR(composer.state(5).cursorPosition->x, 0.5, 1e-6);
    EXPECT_NEAR(composer.state(10).cursorPosition->x, 0, 1e-6);
    double const step = std::abs(composer.state(9.1).cursorPosition->x - composer.state(9.11).cursorPosition->x);
    EXPECT_LT(step, 0.01) << "the way back begins gently";
}

TEST(FrameComposer, aClickPlaysItsEffectWhereItHappenedForAsLongAsTheSettingsSay) {
    auto project = take();
    project.timeline.clips[0].sourceStart = 2;
    project.timeline.clips[0].duration = 8;
    project.cursor.clickDuration = 0.5;
    project.metadata.edit().clicks = {{.t = 1, .position = {0.1, 0.1}}, {.t = 4, .position = {0.25, 0.5}}};
    FrameComposer const composer(project, hd);
    EXPECT_FALSE(composer.state(1.99).activeClick);
    auto const during = composer.state(2.25);
    ASSERT_TRUE(during.activeClick);
    EXPECT_NEAR(during.activeClick->progress, 0.5, 1e-9);
    EXPECT_NEAR(during.clickCanvasPoint.x, 480, 1e-9);
    EXPECT_GT(during.clickRadiusPx, 0);
    EXPECT_FALSE(composer.state(2.5).activeClick);
    for (double t = 0; t < 1; t += 0.1) EXPECT_FALSE(composer.state(t).activeClick) << "that click was cut away";
}

TEST(FrameComposer, whatWasLoggedIsShownByEachClipOfTheRecordingAndByNoOther) {
    auto project = take();
    auto const asset = project.timeline.clips[0].asset;
    project.assetDurations = {{asset, 60}, {"logo.mp4", 60}};
    project.metadata.edit().clicks = {{.t = 1, .position = {0.25, 0.5}}};
    project.timeline.clips = {{.asset = asset, .duration = 4},
                              {.asset = "logo.mp4", .start = 4, .duration = 4},
                              {.asset = asset, .start = 8, .sourceStart = 0.5, .duration = 4}};
    FrameComposer const composer(project, hd);
    for (double const t : {1.1, 8.6}) {
        EXPECT_TRUE(composer.state(t).activeClick) << t;
        EXPECT_TRUE(composer.state(t).cursorPosition) << t;
    }
    EXPECT_EQ(composer.state(5.1).source->asset, "logo.mp4");
    EXPECT_FALSE(composer.state(5.1).activeClick);
    EXPECT_FALSE(composer.state(5.1).cursorPosition);
}

TEST(FrameComposer, theCameraIsShownBesideTheRecordingItBelongsToAndNotOverAnotherMovie) {
    auto project = take();
    auto const asset = project.timeline.clips[0].asset;
    project.cameraAsset = "camera.mp4";
    project.assetDurations = {{asset, 60}, {"logo.mp4", 60}, {"camera.mp4", 60}};
    project.timeline.clips = {{.asset = asset, .duration = 4},
                              {.asset = "logo.mp4", .start = 4, .sourceStart = 20, .duration = 4},
                              {.asset = asset, .start = 8, .sourceStart = 4, .duration = 4}};
    for (auto const scene : {SceneLayout::overlay, SceneLayout::split, SceneLayout::cameraOnly}) {
        project.layoutCues = {{.time = 0, .scene = scene}};
        FrameComposer const composer(project, hd);
        EXPECT_EQ(composer.state(2).cameraSource->time, 2);
        EXPECT_FALSE(composer.state(5).cameraSource);
        EXPECT_FALSE(composer.cameraSource(5));
        EXPECT_EQ(composer.state(5).contentRect, (CanvasRect{0, 0, 1920, 1080})) << "no room is kept for it";
        EXPECT_EQ(composer.state(9).cameraSource->time, 5);
    }
}

TEST(ClickLook, everyEffectBeginsAndEndsInvisibleAndStaysInRange) {
    for (std::size_t index = 1; index < namesOf(ClickEffect{}).size(); ++index) {
        auto const effect = static_cast<ClickEffect>(index);
        SCOPED_TRACE(namesOf(effect)[index]);
        EXPECT_NEAR(clickLook(effect, 0).opacity, 0, 1e-9);
        EXPECT_NEAR(clickLook(effect, 1).opacity, 0, 1e-9);
        double strongest = 0;
        for (double p = 0; p <= 1; p += 0.01) {
            auto const look = clickLook(effect, p);
            strongest = std::max(strongest, look.opacity);
            EXPECT_GE(look.opacity, 0);
            EXPECT_LE(look.opacity, 1);
            EXPECT_GE(look.radius, 0);
        }
        EXPECT_GT(strongest, 0.4);
    }
}

TEST(FrameComposer, aZoomThatFollowsKeepsThePointerInItsMiddlePart) {
    auto project = take();
    project.zoomEvents = {{.start = 2,
                           .duration = 6,
                           .rampIn = 0.3,
                           .rampOut = 0.3,
                           .center = {0.1, 0.1},
                           .scale = 2,
                           .followsCursor = true}};
    FrameComposer const composer(project, hd);
    for (double t = 2.5; t < 7.5; t += 0.05) {
        auto const state = composer.state(t);
        double const onScreen = (state.cursorPosition->x - state.camera.center.x) * state.camera.scale;
        EXPECT_LT(std::abs(onScreen), 0.4) << t;
    }
}

TEST(FrameComposer, aFilledCanvasShowsThePartThatThePointerIsIn) {
    auto project = take();
    project.exportSettings.fit = ContentFit::fill;
    FrameComposer const composer(project, {1080, 1920});
    for (double t = 0.5; t < 9.5; t += 0.25) {
        auto const state = composer.state(t);
        EXPECT_GE(state.cursorCanvasPoint.x, 0) << t;
        EXPECT_LE(state.cursorCanvasPoint.x, 1080) << t;
        EXPECT_LE(state.contentRect.x, 0);
        EXPECT_GE(state.contentRect.maxX(), 1080 - 1e-6);
    }
}

TEST(FrameComposer, theLoupeHoldsThePointItMagnifiesAndShowsThePointerThroughTheGlass) {
    auto project = take();
    project.zoomEvents = {{.start = 0,
                           .duration = 10,
                           .rampIn = 0,
                           .rampOut = 0,
                           .center = {0.5, 0.5},
                           .scale = 2,
                           .style = ZoomStyle::loupe,
                           .loupeSize = 0.2}};
    auto const state = stateOf(project, 5.1); // the pointer is 1 % of the frame right of the lens's centre
    ASSERT_TRUE(state.loupe);
    EXPECT_EQ(state.camera, CameraState::identity);
    EXPECT_NEAR(state.loupeCanvasCenter.x, 960, 1e-9);
    EXPECT_NEAR(state.loupeRadiusPx, 216, 1e-9);
    EXPECT_NEAR(state.cursorCanvasPoint.x, 960 + 2 * 19.2, 1e-3);
}

TEST(FrameComposer, titleCardsComeBeforeAndAfterTheEditAndMoveItLater) {
    auto project = take();
    project.intro = TitleCard{.text = "Hello", .duration = 2};
    project.outro = TitleCard{.text = "Bye", .duration = 1};
    FrameComposer const composer(project, hd);
    EXPECT_DOUBLE_EQ(composer.duration(), 13);
    EXPECT_EQ(composer.state(1).titleCard->text, "Hello");
    EXPECT_FALSE(composer.state(1).source);
    EXPECT_DOUBLE_EQ(composer.state(2).source->time, 0);
    EXPECT_EQ(composer.state(12.5).titleCard->text, "Bye");
}

TEST(FrameComposer, framesAskedForOutOfOrderEqualThoseInOrder) {
    auto project = take();
    project.cursor.motionBlur = 0.5;
    project.zoomEvents = {{.start = 1, .duration = 3, .motionBlur = 1, .followsCursor = true},
                          {.start = 5, .duration = 3}};
    FrameComposer const forward(project, hd);
    FrameComposer const backward(project, hd);
    std::vector<FrameState> states;
    for (int n = 0; n < 300; ++n) states.push_back(forward.state(n / 30.0));
    for (int n = 299; n >= 0; n -= 7) {
        auto const state = backward.state(n / 30.0);
        EXPECT_EQ(state.camera, states[n].camera) << n;
        EXPECT_EQ(state.cursorCanvasPoint, states[n].cursorCanvasPoint) << n;
        EXPECT_EQ(state.cursorBlur, states[n].cursorBlur) << n;
    }
}

TEST(FrameComposer, anEmptyProjectHasFramesWithNothingOfARecording) {
    auto const state = stateOf(DemoProject{}, 0);
    EXPECT_FALSE(state.source);
    EXPECT_TRUE(state.contentRect.isEmpty());
    EXPECT_EQ(state.cursorOpacity, 0);
}

}

}
