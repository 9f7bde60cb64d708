#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Composition/Private/FrameComposer.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace tavaro {

namespace {

constexpr Size2 hd{1920, 1080};

/// Twenty seconds of recording with a camera; the pointer rests in the middle.
DemoProject take() {
    DemoProject project;
    project.sourceSize = hd;
    project.canvas = hd;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 20}};
    project.cameraAsset = "camera.mp4";
    auto& metadata = project.metadata.edit();
    metadata.captureSize = hd;
    metadata.cursorSamples = {{0, {0.5, 0.5}}, {20, {0.5, 0.5}}};
    return project;
}

FrameState stateOf(DemoProject const& project, double at, Size2 canvas = hd) {
    return FrameComposer(project, canvas).state(at);
}

LayoutCue cue(double time, SceneLayout scene) { return {.time = time, .scene = scene}; }
CameraMove move(double time, CameraPlacement placement) { return {.time = time, .placement = placement}; }

bool holds(CanvasRect const& outer, CanvasRect const& inner) {
    constexpr double slack = 1e-6;
    return inner.x >= outer.x - slack && inner.y >= outer.y - slack && inner.maxX() <= outer.maxX() + slack &&
           inner.maxY() <= outer.maxY() + slack;
}

TEST(CameraStage, theCameraFollowsTheCutsAndSpeedsOfTheScreenAndItsOwnOffset) {
    auto project = take();
    project.cameraOffset = 0.5;
    project.intro = TitleCard{.text = "Hi", .duration = 1};
    project.timeline.clips = {{.asset = "screen.mp4", .start = 0, .sourceStart = 4, .duration = 2, .speed = 2},
                              {.asset = "screen.mp4", .start = 2, .sourceStart = 15, .duration = 2}};
    FrameComposer const composer(project, hd);
    EXPECT_FALSE(composer.cameraSource(0.5));
    EXPECT_DOUBLE_EQ(composer.cameraSource(2)->time, 4 + 2 + 0.5);
    EXPECT_DOUBLE_EQ(composer.cameraSource(3.5)->time, 15.5 + 0.5);
    for (double t = 0; t < composer.duration(); t += 0.1)
        EXPECT_EQ(composer.cameraSource(t), composer.state(t).cameraSource) << t;
}

TEST(CameraStage, eachSceneShowsTheCameraInItsOwnWay) {
    auto project = take();
    project.screen.padding = 0.05;
    project.layoutCues = {cue(4, SceneLayout::screenOnly), cue(8, SceneLayout::split),
                          cue(12, SceneLayout::cameraOnly)};
    FrameComposer const composer(project, hd);
    auto const overlay = composer.state(3);
    EXPECT_TRUE(overlay.cameraChrome);
    EXPECT_FALSE(overlay.cameraIsFullPane);
    EXPECT_NEAR(overlay.cameraCornerRadius, overlay.cameraBubbleRect.width / 2, 1e-9);
    EXPECT_EQ(overlay.scene, SceneLayout::overlay);

    auto const screenOnly = composer.state(6);
    EXPECT_FALSE(screenOnly.cameraSource);
    EXPECT_EQ(screenOnly.cameraOpacity, 0);
    EXPECT_EQ(screenOnly.contentRect, overlay.contentRect);

    auto const split = composer.state(10);
    EXPECT_TRUE(split.cameraIsFullPane);
    EXPECT_FALSE(split.cameraChrome);
    EXPECT_GT(split.cameraBubbleRect.x, split.clipRect.maxX());
    EXPECT_TRUE(holds(split.contentRect, split.clipRect)) << "the recording overflows its pane";

    auto const cameraOnly = composer.state(14);
    EXPECT_EQ(cameraOnly.cameraBubbleRect, (CanvasRect{0, 0, 1920, 1080}));
    EXPECT_EQ(cameraOnly.cursorOpacity, 0) << "no pointer in the face";
}

TEST(CameraStage, withoutACameraNothingOfItIsShownAndTheScreenStaysWhole) {
    auto project = take();
    project.layout.content = CanvasLayout::Split{};
    project.layoutCues = {cue(4, SceneLayout::cameraOnly)};
    auto const expected = stateOf(DemoProject(project), 1);
    project.cameraAsset.reset();
    for (double const t : {1.0, 4.2, 10.0}) {
        auto const state = stateOf(project, t);
        EXPECT_FALSE(state.cameraSource);
        EXPECT_EQ(state.contentRect, (CanvasRect{0, 0, 1920, 1080}));
        EXPECT_GT(state.cursorOpacity, 0);
    }
    EXPECT_TRUE(expected.cameraSource);
}

TEST(CameraStage, aSplitKeepsItsPaneCoveredAndWhatAZoomIsAboutInIt) {
    auto project = take();
    for (std::size_t i = 0; i < namesOf(SplitArrangement{}).size(); ++i) {
        project.layout.content = CanvasLayout::Split{static_cast<SplitArrangement>(i), 0.5};
        project.zoomEvents.clear();
        for (double const x : {0.05, 0.35, 0.95}) {
            double const start = 6 * static_cast<double>(project.zoomEvents.size());
            project.zoomEvents.push_back({.start = start, .duration = 5, .center = {x, x}, .scale = 2.2});
        }
        for (auto const canvas : {hd, Size2{1080, 1920}}) {
            FrameComposer const composer(project, canvas);
            for (double t = 0; t < 18; t += 0.05) {
                auto const state = composer.state(t);
                EXPECT_TRUE(holds(state.contentRect, state.clipRect)) << t;
            }
            for (int n = 0; n < 3; ++n) {
                auto const& event = composer.project().zoomEvents[static_cast<std::size_t>(n)];
                auto const state = composer.state(event.start + 2);
                EXPECT_LE(state.clipRect.distance(canvasPoint(state, event.center)), 0) << i << " " << n;
            }
        }
    }
}

TEST(CameraStage, aFilledCanvasShowsWhatAZoomIsAbout) {
    auto project = take();
    project.exportSettings.fit = ContentFit::fill;
    project.zoomEvents = {{.start = 2, .duration = 5, .center = {0.9, 0.5}, .scale = 2}};
    auto const state = stateOf(project, 4, {1080, 1920});
    CanvasRect const canvas{0, 0, 1080, 1920};
    EXPECT_LE(canvas.distance(canvasPoint(state, {0.9, 0.5})), 0);
    EXPECT_TRUE(holds(state.contentRect, canvas));
}

/// What must not jump from one frame to the next, however scenes and moves follow each other.
struct Visible {
    CanvasRect rect;
    double opacity;
    double radius;
    double chrome;
    CanvasRect content;
    CanvasRect clip;

    explicit Visible(FrameState const& state)
        : rect(state.cameraBubbleRect)
        , opacity(state.cameraSource ? state.cameraOpacity : 0)
        , radius(state.cameraCornerRadius)
        , chrome(state.cameraChromeOpacity)
        , content(state.contentRect)
        , clip(state.clipRect) {}
};

double distance(CanvasRect const& a, CanvasRect const& b) {
    return std::max(
        {std::abs(a.x - b.x), std::abs(a.y - b.y), std::abs(a.maxX() - b.maxX()), std::abs(a.maxY() - b.maxY())});
}

DemoProject randomScenes(unsigned seed) {
    std::mt19937 random(seed);
    auto const upTo = [&](double limit) { return std::uniform_real_distribution(0.0, limit)(random); };
    auto project = take();
    project.screen = {.padding = upTo(0.1), .cornerRadius = upTo(30)};
    project.camera.shape = static_cast<CameraShape>(random() % 5);
    project.camera.placement = static_cast<CameraPlacement>(random() % 8);
    project.camera.avoidsContent = random() % 2;
    project.camera.fillsCanvas = random() % 6 == 0;
    project.camera.cutout = random() % 3 == 0;
    project.camera.hidesWhenSilent = random() % 2;
    project.camera.tracksFace = random() % 2;
    project.camera.faceZoom = 1 + upTo(1);
    if (random() % 2) project.layout.content = CanvasLayout::Split{static_cast<SplitArrangement>(random() % 4), 0.4};
    double time = 0;
    while (time < 20) {
        // Some follow each other before the last way is over.
        project.layoutCues.push_back(cue(time, static_cast<SceneLayout>(random() % 4)));
        time += random() % 3 ? upTo(0.5) : upTo(3);
    }
    for (int i = 0; i < 12; ++i) {
        project.cameraMoves.push_back(move(upTo(20), static_cast<CameraPlacement>(random() % 8)));
        if (random() % 3 == 0) project.cameraMoves.back().position = UnitPoint2{upTo(1), upTo(1)};
    }
    auto& metadata = project.metadata.edit();
    metadata.cursorSamples.clear();
    for (int i = 0; i <= 200; ++i) {
        double const t = i / 10.0;
        metadata.cursorSamples.push_back({t, {0.5 + 0.45 * std::sin(t * 0.8), 0.5 + 0.45 * std::cos(t * 0.5)}});
    }
    for (int i = 0; i < 200; ++i) metadata.micLevels.push_back(i % 70 < 25 ? 0.2f : 0.0f);
    auto& faces = project.cameraFaces.edit();
    for (int i = 0; i < 100; ++i)
        faces.push_back({.t = i / 5.0, .rect = {0.3 + 0.3 * std::sin(i / 9.0), 0.3, 0.2, 0.3}});
    return project;
}

TEST(CameraStage, nothingPopsHoweverScenesAndMovesFollowEachOther) {
    constexpr double fps = 120;
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        FrameComposer const composer(randomScenes(seed), hd);
        Visible last(composer.state(0));
        for (int n = 1; n < 20 * fps; ++n) {
            Visible const now(composer.state(n / fps));
            // The quickest way: the longer side in half a second, at the steepest point of its curve, with another way
            // blended over it.
            double const bound = 1920 / 0.5 * 1.9 * 2 / fps;
            EXPECT_LT(distance(now.content, last.content), bound) << n / fps;
            EXPECT_LT(distance(now.clip, last.clip), bound) << n / fps;
            EXPECT_LT(std::abs(now.opacity - last.opacity), 0.12) << n / fps;
            double const seen = std::min(now.opacity, last.opacity); // a jump of what is faint is no more than that
            EXPECT_LT(seen * distance(now.rect, last.rect), bound) << n / fps;
            EXPECT_LT(seen * std::abs(now.radius - last.radius), 15) << n / fps;
            EXPECT_LT(seen * std::abs(now.chrome - last.chrome), 0.08) << n / fps;
            if (testing::Test::HasFailure()) return;
            last = now;
        }
    }
}

TEST(CameraStage, framesAskedForInAnyOrderAreTheSame) {
    for (unsigned seed = 1; seed <= 5; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        auto const project = randomScenes(seed);
        FrameComposer const forward(project, hd);
        std::vector<FrameState> states;
        for (int n = 0; n < 400; ++n) states.push_back(forward.state(n / 20.0));
        FrameComposer const backward(project, hd);
        for (int n = 399; n >= 0; n -= 3) {
            auto const state = backward.state(n / 20.0);
            auto const& expected = states[static_cast<std::size_t>(n)];
            EXPECT_EQ(state.cameraBubbleRect, expected.cameraBubbleRect) << n;
            EXPECT_EQ(state.cameraOpacity, expected.cameraOpacity) << n;
            EXPECT_EQ(state.cameraCrop, expected.cameraCrop) << n;
            EXPECT_EQ(state.contentRect, expected.contentRect) << n;
        }
    }
}

TEST(CameraStage, aBubbleNeverLeavesTheCanvasAndGlidesOrFadesToItsPlace) {
    auto project = take();
    project.camera.placement = CameraPlacement::bottomLeft;
    project.cameraMoves = {move(2, CameraPlacement::bottomRight), move(6, CameraPlacement::topLeft)};
    FrameComposer const composer(project, hd);
    for (double t = 0; t < 10; t += 1 / 60.0)
        EXPECT_TRUE(holds({0, 0, 1920, 1080}, composer.state(t).cameraBubbleRect)) << t;
    CanvasRect const& corner = composer.state(5).cameraBubbleRect;
    EXPECT_NEAR(corner.maxX(), 1920 - 0.03 * 1080, 1e-9);
    EXPECT_LT(composer.state(6.3).cameraOpacity, 0.01) << "across the whole picture it goes unseen";
    EXPECT_NEAR(composer.state(7).cameraBubbleRect.x, 0.03 * 1080, 1e-9);
}

TEST(CameraStage, whatLiesAtTheBeginningIsHowTheEditStarts) {
    auto project = take();
    project.layoutCues = {cue(0, SceneLayout::cameraOnly)};
    project.cameraMoves = {move(0, CameraPlacement::topLeft)};
    EXPECT_EQ(stateOf(project, 0).cameraBubbleRect.width, 1920);
    project.layoutCues.clear();
    EXPECT_EQ(stateOf(project, 0).cameraBubbleRect, stateOf(project, 5).cameraBubbleRect);
}

TEST(CameraStage, aBubbleThatKeepsOutOfTheWayLeavesWorkBeneathItAndComesBack) {
    auto project = take();
    project.camera.avoidsContent = true;
    auto& samples = project.metadata.edit().cursorSamples;
    samples.clear();
    for (int i = 0; i <= 200; ++i) {
        double const t = i / 10.0;
        bool const isInCorner = t > 5 && t < 10; // beneath the bubble at the bottom right
        samples.push_back({t, isInCorner ? UnitPoint2{0.93, 0.85} : UnitPoint2{0.4, 0.4}});
    }
    FrameComposer const composer(project, hd);
    auto const home = composer.state(1).cameraBubbleRect;
    EXPECT_GT(home.center().x, 960);
    for (double t = 5.2; t < 9.8; t += 0.1) {
        auto const state = composer.state(t);
        EXPECT_GT(state.cameraBubbleRect.distance(state.cursorCanvasPoint), 20) << t;
    }
    EXPECT_EQ(composer.state(14).cameraBubbleRect, home);
    int moves = 0;
    for (double t = 0; t < 19; t += 0.05) {
        bool const rests = composer.state(t).cameraBubbleRect == composer.state(t + 0.05).cameraBubbleRect;
        bool const restsLater = composer.state(t + 0.05).cameraBubbleRect == composer.state(t + 0.1).cameraBubbleRect;
        moves += rests && !restsLater;
    }
    EXPECT_EQ(moves, 2) << "there and back, without fidgeting";

    auto const quick = [&] {
        auto passing = project;
        auto& path = passing.metadata.edit().cursorSamples;
        for (auto& sample : path)
            sample.position = sample.t > 5 && sample.t < 5.15 ? UnitPoint2{0.93, 0.85} : UnitPoint2{0.4, 0.4};
        return FrameComposer(passing, hd);
    }();
    for (double t = 0; t < 20; t += 0.1)
        EXPECT_EQ(quick.state(t).cameraBubbleRect, home) << "the pointer only passed by";
}

TEST(CameraStage, aSilentSpeakerGoesAndIsBackBeforeTheNextWord) {
    auto project = take();
    project.camera.hidesWhenSilent = true;
    EXPECT_EQ(stateOf(project, 10).cameraOpacity, 1) << "nobody knows who speaks when";
    Transcript transcript;
    transcript.words = {{.text = "Hello", .start = 1, .end = 1.5}, {.text = "again", .start = 12, .end = 12.4}};
    project.transcript = transcript;
    FrameComposer const composer(project, hd);
    EXPECT_EQ(composer.state(1.2).cameraOpacity, 1);
    EXPECT_FALSE(composer.state(8).cameraSource);
    EXPECT_NEAR(composer.state(11.9).cameraOpacity, 1, 1e-6);
    EXPECT_FALSE(composer.state(19).cameraSource);

    project.timeline.clips = {{.asset = "screen.mp4", .start = 0, .sourceStart = 10, .duration = 8}};
    EXPECT_EQ(stateOf(project, 2.2).cameraOpacity, 1) << "words move with the edit";
    project.layoutCues = {cue(0, SceneLayout::split)};
    EXPECT_EQ(stateOf(project, 6).cameraOpacity, 1) << "a pane stays";
}

TEST(CameraStage, withoutATranscriptTheMicrophoneTellsWhoSpeaksButNotAKnock) {
    auto project = take();
    project.camera.hidesWhenSilent = true;
    auto& levels = project.metadata.edit().micLevels;
    levels.assign(200, 0.001f); // ten a second
    std::fill(levels.begin() + 20, levels.begin() + 50, 0.1f);
    levels[120] = 0.9f;
    FrameComposer const composer(project, hd);
    EXPECT_EQ(composer.state(3).cameraOpacity, 1);
    EXPECT_EQ(composer.state(5.5).cameraOpacity, 1) << "a breath is no silence";
    EXPECT_FALSE(composer.state(9).cameraSource);
    EXPECT_FALSE(composer.state(12.1).cameraSource);
}

TEST(CameraStage, theShownPartFollowsTheFaceInsideTheUsersCrop) {
    auto project = take();
    project.camera.tracksFace = true;
    project.camera.faceZoom = 1.5;
    project.camera.crop = {0.1, 0, 0.85, 1};
    auto& faces = project.cameraFaces.edit();
    for (int i = 0; i <= 200; ++i) faces.push_back({.t = i / 10.0, .rect = {i < 100 ? 0.15 : 0.65, 0.3, 0.2, 0.3}});
    FrameComposer const composer(project, hd);
    for (double t = 0; t < 20; t += 0.1) {
        auto const crop = composer.state(t).cameraCrop;
        EXPECT_GE(crop.x, 0.1 - 1e-9);
        EXPECT_LE(crop.maxX(), 0.95 + 1e-9);
        EXPECT_GE(crop.y, -1e-9);
        EXPECT_LE(crop.maxY(), 1 + 1e-9);
        EXPECT_NEAR(crop.width * 16 / (crop.height * 9), 1, 1e-9) << "the bubble's own shape";
    }
    EXPECT_NEAR(composer.state(17).cameraCrop.center().x, 0.75, 0.06);
    EXPECT_NEAR(composer.state(3).cameraCrop.center().x, 0.29, 0.06) << "as far as the crop lets it";
    project.camera.tracksFace = false;
    EXPECT_EQ(stateOf(project, 3).cameraCrop, project.camera.crop);
}

TEST(CameraStage, aCameraThatStoppedBeforeTheScreenIsGoneAndNotFrozen) {
    auto project = take();
    project.assetDurations["camera.mp4"] = 8;
    EXPECT_EQ(stateOf(project, 7.9).cameraOpacity, 1);
    EXPECT_FALSE(stateOf(project, 9).cameraSource);
    project.cameraOffset = -3;
    EXPECT_FALSE(stateOf(project, 1).cameraSource) << "it began later";
}

}

}
