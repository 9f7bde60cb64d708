#include "Scenes.h"

#include <cstring>

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <TavaroPlatform/Queues/RowBands.h>

namespace tavaro {

using namespace scenes;

namespace {

/// Bands of unequal height, last one first.
class ScatteredBands : public RowBands {
public:
    void run(int rowCount, Band band) override {
        for (int end = rowCount, height = 1; end > 0; end -= height, height = height * 2 % 37 + 1)
            band(std::max(end - height, 0), end);
    }
};

}

TEST(FastComposite, staysWithinOneStepOfTheFormulasOnAnySceneAndAnyVectorUnit) {
    // Every kind of vector unit that this machine can run, down to none.
    unsigned seed = 0;
    for (auto const target : hwy::SupportedAndGeneratedTargets()) {
        auto areAllEqual = true;
        VectorUnit const unit(target);
        for (auto const last = seed + 150; seed < last; ++seed) {
            auto const scene = randomScene(seed);
            auto const draw = [&](CompositorBackend backend) {
                return drawn(backend, scene.uniforms, scene.screen, scene.background, scene.width, scene.height);
            };
            auto const wanted = draw(CompositorBackend::reference);
            auto const d = difference(wanted.view(), draw(CompositorBackend::cpu).view());
            auto const& u = scene.uniforms;
            ASSERT_LE(d.largest, 1) << "seed " << seed << " on " << hwy::TargetName(target) << " at " << d.x << ", "
                                    << d.y << " of " << scene.width << "×" << scene.height << ": background "
                                    << int(u.bgMode) << ", frame " << int(u.frameMode) << ", zoom " << u.zoomScale
                                    << ", sharpen " << u.sharpen << ", blur "
                                    << u.blurStrength * static_cast<float>(u.blurTaps) << ", loupe "
                                    << u.loupeRadius * u.loupePresence;
            areAllEqual = areAllEqual && d.largest == 0;
        }
        EXPECT_FALSE(areAllEqual) << "the formulas were compared with themselves";
    }
}

TEST(FastComposite, drawsTheSamePixelsOnEveryVectorUnit) {
    for (unsigned seed = 1; seed <= 700; ++seed) {
        auto const scene = randomScene(seed);
        ScreenTexture const screen(scene.screen.view());
        auto const draw = [&](MutableImageView canvas) {
            Compositor().composite(scene.uniforms, screen, scene.background.view(), canvas);
        };
        auto const& u = scene.uniforms;
        ASSERT_EQ(differenceOfVectorUnits(Image(scene.width, scene.height), draw), "")
            << "seed " << seed << ": background " << int(u.bgMode) << ", zoom " << u.zoomScale << ", loupe "
            << u.loupeRadius * u.loupePresence << " of " << u.loupeMag;
    }
}

TEST(FastComposite, losesNoDetailThatStandsAloneInAFlatArea) {
    // One odd pixel anywhere on an otherwise flat recording, or on one of flat bands.
    Random random(5);
    for (auto const target : hwy::SupportedAndGeneratedTargets()) {
        VectorUnit const unit(target);
        for (int round = 0; round < 25; ++round) {
            Image screen(700, 24);
            auto const step = random.chance(0.5f) ? 5 : 0;
            for (int y = 0; y < screen.height(); ++y)
                std::memset(screen.row(y), 200 - y / 2 * step, 4 * static_cast<std::size_t>(screen.width()));
            auto const x = random.upTo(screen.width() - 1);
            auto const y = random.upTo(screen.height() - 1);
            screen.row(y)[4 * x + random.upTo(2)] = 90;
            auto u = plainLook(900, 30, 0);
            u.zoomScale = random.between(0.6f, 6);
            u.zoomCenter = {static_cast<float>(x) / 700, static_cast<float>(y) / 24};
            u.sharpen = random.chance(0.7f) ? 1 : 0;
            auto const wanted = drawn(CompositorBackend::reference, u, screen, Image(), 900, 30);
            auto const got = drawn(CompositorBackend::cpu, u, screen, Image(), 900, 30);
            ASSERT_LE(difference(wanted.view(), got.view()).largest, 1)
                << hwy::TargetName(target) << ", zoom " << u.zoomScale << ", pixel " << x << ", " << y;
        }
    }
}

TEST(FastComposite, drawsTheSameInBandsAndFromOneFrameToTheNext) {
    ScatteredBands bands;
    Compositor reused(CompositorBackend::cpu, bands);
    for (unsigned seed = 1; seed <= 60; ++seed) {
        auto const scene = randomScene(seed);
        ScreenTexture const screen(scene.screen.view());
        auto const wanted =
            drawn(CompositorBackend::cpu, scene.uniforms, scene.screen, scene.background, scene.width, scene.height);
        for (int repeat = 0; repeat < 2; ++repeat) {
            Image canvas(scene.width, scene.height);
            reused.composite(scene.uniforms, screen, scene.background.view(), canvas.view());
            ASSERT_EQ(difference(wanted.view(), canvas.view()).largest, 0) << "seed " << seed;
        }
    }
}

TEST(FastComposite, writesNothingOutsideTheCanvas) {
    for (unsigned seed = 1000; seed <= 1100; ++seed) {
        auto const scene = randomScene(seed);
        constexpr int margin = 5;
        Image around(scene.width + 2 * margin, scene.height + 2);
        for (int y = 0; y < around.height(); ++y)
            std::memset(around.row(y), 0xa5, static_cast<std::size_t>(around.stride()));
        MutableImageView const canvas{around.row(1) + 4 * margin, scene.width, scene.height, around.stride()};
        Compositor().composite(scene.uniforms, ScreenTexture(scene.screen.view()), scene.background.view(), canvas);
        for (int y = 0; y < around.height(); ++y)
            for (int x = 0; x < around.width(); ++x) {
                auto const isCanvas = y >= 1 && y <= scene.height && x >= margin && x < margin + scene.width;
                if (isCanvas) continue;
                ASSERT_EQ(at(around, x, y), (Pixel{0xa5, 0xa5, 0xa5, 0xa5})) << "seed " << seed;
            }
    }
}

TEST(FastComposite, readsNothingPastTheEndsOfTheRecording) {
    // The recording's rows stand in a larger picture of loud noise, of which nothing may show.
    for (unsigned seed = 1; seed <= 60; ++seed) {
        auto scene = randomScene(seed);
        if (scene.screen.isEmpty()) continue;
        Random random(seed);
        Image loud(scene.screen.width() + 80, scene.screen.height() + 8);
        for (int y = 0; y < loud.height(); ++y)
            for (int i = 0; i < 4 * loud.width(); ++i) loud.row(y)[i] = static_cast<std::uint8_t>(random.upTo(255));
        for (int y = 0; y < scene.screen.height(); ++y)
            std::memcpy(loud.row(y + 4) + 160, scene.screen.row(y), 4 * static_cast<std::size_t>(scene.screen.width()));
        ImageView const inside{loud.row(4) + 160, scene.screen.width(), scene.screen.height(), loud.stride()};
        auto const wanted =
            drawn(CompositorBackend::cpu, scene.uniforms, scene.screen, scene.background, scene.width, scene.height);
        Image canvas(scene.width, scene.height);
        Compositor().composite(scene.uniforms, ScreenTexture(inside), scene.background.view(), canvas.view());
        ASSERT_EQ(difference(wanted.view(), canvas.view()).largest, 0) << "seed " << seed;
    }
}

TEST(FastComposite, seesThroughALensOverARecordingAtAnyScale) {
    // The bend of the rim runs through mip levels, and scales of two stand on their borders.
    Random random(17);
    auto const screen = picture(random, 240, 144);
    for (auto const zoom : {0.25f, 0.5f, 0.9f, 1.0f, 2.0f})
        for (int step = 0; step < 16; ++step) {
            auto u = plainLook(200, 120, 0.2f);
            u.zoomScale = zoom;
            u.loupeCenter = {60 + static_cast<float>(step), 50};
            u.loupeRadius = 38;
            u.loupeMag = 1 + 0.2f * static_cast<float>(step);
            u.loupePresence = 1;
            auto const wanted = drawn(CompositorBackend::reference, u, screen, Image(), 200, 120);
            auto const got = drawn(CompositorBackend::cpu, u, screen, Image(), 200, 120);
            ASSERT_LE(difference(wanted.view(), got.view()).largest, 1) << zoom << ", " << u.loupeMag;
        }
}

TEST(FastComposite, forgetsABackgroundWhosePixelsChanged) {
    Image background(4, 4);
    CompositeUniforms u;
    u.canvasSize = {8, 8};
    u.bgMode = BackgroundMode::image;
    Compositor compositor;
    Image canvas(8, 8);
    compositor.composite(u, ScreenTexture(), background.view(), canvas.view());
    for (int y = 0; y < 4; ++y) std::memset(background.row(y), 200, 16);
    compositor.forgetBackground();
    compositor.composite(u, ScreenTexture(), background.view(), canvas.view());
    EXPECT_EQ(at(canvas, 4, 4), (Pixel{200, 200, 200, 255}));
}

}
