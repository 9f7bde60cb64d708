#include "../Export/TestTake.h"

#include <TavaroMedia/Frames/PNG.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroRender/Composition/Private/FrameComposer.h>
#include <TavaroRender/Renderer/Renderer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace tavaro {

namespace {

Image copyOf(ImageView view) {
    Image image(view.width, view.height);
    for (int y = 0; y < view.height; ++y) std::memcpy(image.row(y), view.row(y), 4 * std::size_t(view.width));
    return image;
}

TEST(Renderer, aFrameThatLooksLikeTheOneBeforeIsNotDrawnAgain) {
    TestTake take("once", 30);
    take.project.metadata.edit().cursorSamples = {{0, {0.5, 0.5}}};
    FrameComposer const composer(take.project, {640, 360});
    MovieReader reader(take.package.assetURL("screen.mp4"));
    Renderer renderer(take.package);
    auto const first = copyOf(renderer.render(composer.state(0.1), composer.project(), {reader.frame(0.1)}));
    renderer.render(composer.state(0.2), composer.project(), {reader.frame(0.1)});
    EXPECT_EQ(renderer.framesDrawn(), 1) << "another time, the same picture";
    renderer.render(composer.state(0.2), composer.project(), {reader.frame(0.2)});
    EXPECT_EQ(renderer.framesDrawn(), 2) << "another frame of the recording";
    auto const again = renderer.render(composer.state(0.1), composer.project(), {reader.frame(0.1)});
    EXPECT_EQ(renderer.framesDrawn(), 3);
    EXPECT_TRUE(samePixels(first.view(), again));
}

TEST(Renderer, aPlainRecordingThatFillsTheCanvasIsShownAsItIsUpToTheEdges) {
    TestTake take("plain", 2);
    take.project.screen = {};
    take.project.background = {BackgroundStyle::None{}};
    take.project.cursor.isVisible = false;
    take.project.zoomEvents.clear();
    FrameComposer const composer(take.project, {320, 180});
    auto const movie = take.package.assetURL("screen.mp4");
    Renderer renderer(take.package);
    auto const drawn = renderer.render(composer.state(0), composer.project(), {MovieReader(movie).frame(0)});
    auto const recorded = movieFrame(movie, 0, 30);
    int largest = 0;
    for (int y = 0; y < drawn.height; ++y) {
        for (int i = 0; i < 4 * drawn.width; ++i)
            largest = std::max(largest, std::abs(drawn.row(y)[i] - recorded.view().row(y)[i]));
    }
    EXPECT_LE(largest, 1);
}

TEST(Renderer, aBoxThatIsFilledCoversWhatIsBeneathOnce) {
    TestTake take("box", 30);
    take.project.screen = {};
    take.project.background = {BackgroundStyle::None{}};
    take.project.cursor.isVisible = false;
    take.project.zoomEvents.clear();
    auto const screen = MovieReader(take.package.assetURL("screen.mp4")).frame(0);
    auto const drawn = [&] {
        FrameComposer const composer(take.project, {320, 180});
        Renderer renderer(take.package);
        return copyOf(renderer.render(composer.state(0.5), composer.project(), {screen}));
    };
    auto const plain = drawn();
    take.project.overlays = {{.kind = {OverlayKind::Box{{0.2, 0.2, 0.6, 0.6}}},
                              .start = 0,
                              .duration = 2,
                              .backgroundColor = RGBAColor{1, 0, 0, 0.5},
                              .animationIn = OverlayAnimation::none,
                              .animationOut = OverlayAnimation::none}};
    auto const filled = drawn();
    std::uint8_t const red[] = {255, 0, 0};
    for (int y = 60; y < 120; ++y) {
        for (int x = 100; x < 220; ++x) {
            for (int c = 0; c < 3; ++c) {
                auto const beneath = std::as_const(plain).view().row(y)[4 * x + c];
                ASSERT_NEAR(std::as_const(filled).view().row(y)[4 * x + c], (beneath + red[c]) / 2.0, 1.5)
                    << x << ", " << y;
            }
        }
    }
}

TEST(Renderer, aPointerThatMovesOverAStillPictureLeavesNoTrace) {
    TestTake take("trace", 2);
    take.project.timeline.clips[0].duration = 2;
    take.project.cursor.motionBlur = 1;
    take.project.cursor.size = 3;
    take.project.metadata.edit().clicks = {{.t = 0.3, .position = {0.4, 0.5}}, {.t = 1, .position = {0.98, 0.02}}};
    MovieReader reader(take.package.assetURL("screen.mp4"));
    auto const screen = reader.frame(0);
    for (std::size_t i = 0; i < namesOf(CursorStyle{}).size(); ++i) {
        auto project = take.project;
        project.cursor.style = static_cast<CursorStyle>(i);
        project.cursor.clickEffect = static_cast<ClickEffect>(i % namesOf(ClickEffect{}).size());
        FrameComposer const composer(project, {320, 180});
        Renderer renderer(take.package);
        for (double t = 0; t < 1.9; t += 0.11) {
            auto const state = composer.state(t);
            Renderer fresh(take.package);
            EXPECT_TRUE(samePixels(renderer.render(state, project, {screen}), fresh.render(state, project, {screen})))
                << namesOf(CursorStyle{})[i] << " at " << t;
        }
    }
}

TEST(Renderer, manyThreadsDrawTheBytesOfOne) {
    TestTake take("bytes", 60);
    take.project.zoomEvents = {{.start = 0.2, .duration = 1.5, .motionBlur = 1, .followsCursor = true}};
    take.project.screen.frame = DeviceFrame::macbook;
    FrameComposer const composer(take.project, {641, 359});
    MovieReader reader(take.package.assetURL("screen.mp4"));
    Renderer one(take.package, {.threads = 1});
    Renderer many(take.package, {.threads = 4});
    for (double t = 0; t < 2; t += 0.13) {
        auto const screen = reader.frame(t);
        auto const state = composer.state(t);
        EXPECT_TRUE(samePixels(one.render(state, composer.project(), {screen}),
                               many.render(state, composer.project(), {screen})))
            << t;
    }
}

TEST(Renderer, aBackgroundImageFillsTheCanvasAroundTheRecordingAndFollowsTheProject) {
    TestTake take("image", 6);
    Image picture(64, 32);
    for (int y = 0; y < 32; ++y) {
        for (int x = 0; x < 64; ++x) std::memcpy(picture.row(y) + 4 * x, "\xF0\x20\x20\xFF", 4);
    }
    writePNG(take.package.assetURL("red.png"), picture.view());
    for (int y = 0; y < 32; ++y) {
        for (int x = 0; x < 64; ++x) std::memcpy(picture.row(y) + 4 * x, "\x20\x20\xF0\xFF", 4);
    }
    writePNG(take.package.assetURL("blue.png"), picture.view());
    MovieReader reader(take.package.assetURL("screen.mp4"));
    Renderer renderer(take.package);
    auto const cornerOf = [&](std::string const& asset, double blur) {
        take.project.background.content = BackgroundStyle::ImageFile{.assetName = asset, .blur = blur};
        FrameComposer const composer(take.project, {640, 360});
        auto const canvas = renderer.render(composer.state(0), composer.project(), {reader.frame(0)});
        return std::vector<int>{canvas.row(0)[0], canvas.row(0)[1], canvas.row(0)[2], canvas.row(0)[3]};
    };
    EXPECT_EQ(cornerOf("red.png", 0), (std::vector{0xF0, 0x20, 0x20, 0xFF}));
    EXPECT_EQ(cornerOf("blue.png", 30), (std::vector{0x20, 0x20, 0xF0, 0xFF}));
}

TEST(Renderer, aMomentWithoutAClipShowsTheBackgroundAlone) {
    TestTake take("gap", 6);
    take.project.background.content = BackgroundStyle::Solid{RGBAColor::rgb(0x336699)};
    take.project.timeline.clips[0].start = 1;
    FrameComposer const composer(take.project, {64, 36});
    Renderer renderer(take.package);
    auto const canvas = renderer.render(composer.state(0), composer.project(), {});
    for (int y = 0; y < 36; ++y) {
        for (int x = 0; x < 64; ++x) ASSERT_EQ(std::memcmp(canvas.row(y) + 4 * x, "\x33\x66\x99\xFF", 4), 0);
    }
}

}

}
