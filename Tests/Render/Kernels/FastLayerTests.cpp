#include "Guarded.h"

#include <cmath>

#include <TavaroRender/Kernels/BlitUniforms.h>
#include <TavaroRender/Kernels/RegionUniforms.h>

#include <hwy/targets.h>

namespace tavaro {

using namespace scenes;

namespace {

/// Colours premultiplied by an alpha that is often empty or full.
Image randomLayer(Random& random, int width, int height) {
    auto layer = picture(random, width, height);
    auto const run = 1 + random.upTo(30);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            auto* p = layer.row(y) + 4 * x;
            auto const kind = (x / run + y / 5) % 3;
            int const alpha = kind == 0 ? 0 : kind == 1 ? 255 : random.upTo(255);
            for (int c = 0; c < 3; ++c) p[c] = static_cast<std::uint8_t>(p[c] * alpha / 255);
            p[3] = static_cast<std::uint8_t>(alpha);
        }
    return layer;
}

BlitUniforms randomPlace(Random& random, int width, int height, Image const& layer) {
    BlitUniforms u;
    auto const w = static_cast<float>(width);
    auto const h = static_cast<float>(height);
    u.canvasSize = {w, h};
    u.origin = {random.between(-0.5f, 1) * w, random.between(-0.5f, 1) * h};
    if (random.chance(0.6f)) u.origin = {std::floor(u.origin.x), std::floor(u.origin.y)};
    u.size = {static_cast<float>(layer.width()), static_cast<float>(layer.height())};
    if (random.chance(0.4f)) u.size = {random.between(0, 1.5f) * w, random.between(0, 1.5f) * h};
    if (random.chance(0.05f)) u.size.x = -u.size.x;
    if (random.chance(0.05f)) u.size.y = 0;
    u.opacity = random.chance(0.5f) ? 1 : random.between(0, 1);
    if (random.chance(0.05f)) u.opacity = 0;
    return u;
}

RegionUniforms randomRegion(Random& random, int width, int height) {
    RegionUniforms u;
    u.color = random.color();
    u.texSize = {static_cast<float>(width), static_cast<float>(height)};
    u.origin = {random.between(-0.3f, 1), random.between(-0.3f, 1)};
    u.size = {random.between(0, 0.8f), random.between(0, 0.8f)};
    if (random.chance(0.2f)) { // borders on pixel centres
        u.origin = {(std::floor(u.origin.x * u.texSize.x) + 0.5f) / u.texSize.x, u.origin.y};
        u.size = {std::floor(u.size.x * u.texSize.x) / u.texSize.x, u.size.y};
    }
    if (random.chance(0.1f)) u = {u.color, u.texSize, {0, 0}, {1, 1}, 0, {}};
    u.radius = random.chance(0.2f) ? random.between(-2, 2) : random.between(1, 30);
    if (random.chance(0.05f)) u.radius = std::pow(10.0f, random.between(2, 9));
    u.mode = static_cast<RegionMode>(random.upTo(4));
    return u;
}

void apply(CompositorBackend backend, RegionUniforms const& u, ImageView source, MutableImageView target) {
    Compositor(backend).regionEffect(u, source, target);
}

}

TEST(FastBlit, staysWithinOneStepOfTheFormulasAndInsideTheCanvas) {
    auto const targets = hwy::SupportedAndGeneratedTargets();
    auto areAllEqual = true;
    for (unsigned seed = 1; seed <= 1500; ++seed) {
        VectorUnit const unit(targets[seed % targets.size()]);
        Random random(seed);
        Guarded const before(random, 1 + random.upTo(130), 1 + random.upTo(60));
        auto const layer = randomLayer(random, 1 + random.upTo(random.chance(0.1f) ? 2 : 120), 1 + random.upTo(60));
        auto const u = randomPlace(random, before.width, before.height, layer);
        auto wanted = before;
        auto got = before;
        Compositor(CompositorBackend::reference).blitLayer(u, layer.view(), wanted.view());
        Compositor(CompositorBackend::cpu).blitLayer(u, layer.view(), got.view());
        auto const d = difference(wanted.view(), got.view());
        ASSERT_LE(d.largest, 1) << "seed " << seed << " at " << d.x << ", " << d.y << " of " << before.width << "×"
                                << before.height << ", layer " << layer.width() << "×" << layer.height() << " at "
                                << u.origin.x << ", " << u.origin.y << " of size " << u.size.x << "×" << u.size.y;
        ASSERT_EQ(changedAround(before, got), "") << "seed " << seed;
        areAllEqual = areAllEqual && d.largest == 0;
    }
    EXPECT_FALSE(areAllEqual) << "the formulas were compared with themselves";
}

TEST(FastBlit, drawsTheSamePixelsOnEveryVectorUnit) {
    for (unsigned seed = 1; seed <= 400; ++seed) {
        Random random(seed);
        auto const canvas = picture(random, 1 + random.upTo(130), 1 + random.upTo(60));
        auto const layer = randomLayer(random, 1 + random.upTo(120), 1 + random.upTo(60));
        auto const u = randomPlace(random, canvas.width(), canvas.height(), layer);
        auto const draw = [&](MutableImageView on) { Compositor().blitLayer(u, layer.view(), on); };
        ASSERT_EQ(differenceOfVectorUnits(canvas, draw), "") << "seed " << seed;
    }
}

TEST(FastRegion, drawsTheSamePixelsOnEveryVectorUnit) {
    for (unsigned seed = 1; seed <= 400; ++seed) {
        Random random(seed);
        auto const source = picture(random, 1 + random.upTo(90), 1 + random.upTo(60));
        auto const u = randomRegion(random, source.width(), source.height());
        auto const draw = [&](MutableImageView on) { apply(CompositorBackend::cpu, u, source.view(), on); };
        ASSERT_EQ(differenceOfVectorUnits(source, draw), "") << "seed " << seed;
    }
}

TEST(BlitLayer, laysPremultipliedColoursWhereTheirPixelsFall) {
    Image layer(4, 1);
    for (int i = 0; i < 4; ++i) layer.row(0)[4 * i + 1] = layer.row(0)[4 * i + 3] = static_cast<std::uint8_t>(i * 85);
    for (auto const backend : {CompositorBackend::reference, CompositorBackend::cpu}) {
        Image canvas(8, 3);
        canvas.row(1)[4 * 3] = canvas.row(1)[4 * 4] = 200;
        Compositor(backend).blitLayer({{8, 3}, {2, 1}, {4, 1}, 1, 0}, layer.view(), canvas.view());
        EXPECT_EQ(at(canvas, 2, 1), (Pixel{0, 0, 0, 0})) << "nothing of an empty pixel";
        EXPECT_EQ(at(canvas, 3, 1), (Pixel{133, 85, 0, 85})) << "a third of it, over what is there";
        EXPECT_EQ(at(canvas, 4, 1), (Pixel{67, 170, 0, 170}));
        EXPECT_EQ(at(canvas, 5, 1), (Pixel{0, 255, 0, 255}));
        EXPECT_EQ(at(canvas, 6, 1), (Pixel{0, 0, 0, 0})) << "past its edge";
        EXPECT_EQ(at(canvas, 5, 2), (Pixel{0, 0, 0, 0}));
    }
}

TEST(FastRegion, equalsTheFormulasWithinOneStepApartAndInPlace) {
    auto const targets = hwy::SupportedAndGeneratedTargets();
    for (unsigned seed = 1; seed <= 1200; ++seed) {
        VectorUnit const unit(targets[seed % targets.size()]);
        Random random(seed);
        Guarded source(random, 1 + random.upTo(90), 1 + random.upTo(60));
        auto const u = randomRegion(random, source.width, source.height);
        auto wanted = source;
        auto apart = source;
        auto inPlace = source;
        apply(CompositorBackend::reference, u, source.view(), wanted.view());
        std::memset(apart.view().row(0), 77, 4);
        apply(CompositorBackend::cpu, u, source.view(), apart.view());
        apply(CompositorBackend::cpu, u, inPlace.view(), inPlace.view());
        auto const d = difference(wanted.view(), apart.view());
        ASSERT_LE(d.largest, 1) << "seed " << seed << " at " << d.x << ", " << d.y << ": mode " << int(u.mode)
                                << ", radius " << u.radius << ", " << source.width << "×" << source.height;
        ASSERT_EQ(difference(apart.whole.view(), inPlace.whole.view()).largest, 0) << "seed " << seed;
        ASSERT_EQ(changedAround(source, apart), "") << "seed " << seed;
    }
}

TEST(RegionEffect, changesThePixelsOfTheRegionToItsLastCentreAndNoOther) {
    Random random(4);
    auto const source = picture(random, 40, 30);
    for (auto const backend : {CompositorBackend::reference, CompositorBackend::cpu}) {
        Image target(40, 30);
        // From the centre of column 10 to that of column 20.
        apply(backend, {{1, 0, 1, 1}, {40, 30}, {10.5f / 40, 0.2f}, {10.0f / 40, 0.5f}, 0, RegionMode::fill},
              source.view(), target.view());
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 40; ++x) {
                auto const isInside = x >= 10 && x <= 20 && y >= 6 && y < 21;
                ASSERT_EQ(at(target, x, y), isInside ? (Pixel{255, 0, 255, 255}) : at(source, x, y)) << x << ", " << y;
            }
        apply(backend, {{0, 0, 0, 0.5f}, {40, 30}, {0.25f, 0.2f}, {0.5f, 0.5f}, 0, RegionMode::highlight},
              source.view(), target.view());
        EXPECT_EQ(at(target, 15, 15), at(source, 15, 15)) << "what is highlighted stays";
        EXPECT_NEAR(at(target, 5, 15).r, at(source, 5, 15).r / 2.0, 0.5);
    }
}

TEST(RegionEffect, aBlurIsTheMeanOfEverySecondPixelWithinItsReach) {
    Image source(9, 9);
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 9; ++x) source.row(y)[4 * x + 3] = 255;
    source.row(4)[4 * 4] = 252;
    for (auto const backend : {CompositorBackend::reference, CompositorBackend::cpu}) {
        Image target(9, 9);
        apply(backend, {{}, {9, 9}, {0, 0}, {1, 1}, 2.9f, RegionMode::blur}, source.view(), target.view());
        EXPECT_EQ(at(target, 4, 4).r, 28) << "one of nine: two to the left, itself, two to the right";
        EXPECT_EQ(at(target, 6, 2).r, 28);
        EXPECT_EQ(at(target, 5, 4).r, 0) << "odd steps are passed over";
        EXPECT_EQ(at(target, 8, 4).r, 0);
        EXPECT_EQ(at(target, 8, 8).a, 255);
    }
}

TEST(RegionEffect, aBlurWiderThanThePictureGoesOnFadingToTheColoursOfItsCorners) {
    Image source(60, 40);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 60; ++x)
            std::memset(source.row(y) + 4 * x, (x == 0 || x == 59) && (y == 0 || y == 39) ? 40 : 255, 4);
    for (auto const backend : {CompositorBackend::reference, CompositorBackend::cpu}) {
        auto const middle = [&](float radius) {
            Image target(60, 40);
            apply(backend, {{}, {60, 40}, {0.4f, 0.4f}, {0.2f, 0.2f}, radius, RegionMode::blur}, source.view(),
                  target.view());
            return int{at(target, 30, 20).r};
        };
        EXPECT_EQ(middle(3000), 43); // 40 + 215 · (1 − (1 − 29/3001) · (1 − 19/3001)): inside, 29 columns, 19 rows
        EXPECT_EQ(middle(1e6f), 40);
        EXPECT_EQ(middle(3e38f), 40);
    }
}

TEST(FastRegion, aWideBlurReadsAWidePictureUpToItsReachAndNoFurther) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        Random random(seed);
        Guarded source(random, 5000 + random.upTo(1500), 1 + random.upTo(3));
        RegionUniforms u;
        u.texSize = {static_cast<float>(source.width), static_cast<float>(source.height)};
        u.origin = {random.between(-0.005f, 0.995f), -1};
        u.size = {0.005f, 3};
        u.radius = random.between(2040, 2900);
        auto wanted = source;
        auto inPlace = source;
        apply(CompositorBackend::reference, u, source.view(), wanted.view());
        apply(CompositorBackend::cpu, u, inPlace.view(), inPlace.view());
        auto const d = difference(wanted.view(), inPlace.view());
        EXPECT_LE(d.largest, 1) << "seed " << seed << " at " << d.x << ", " << d.y << ": radius " << u.radius;
        EXPECT_EQ(changedAround(source, inPlace), "") << "seed " << seed;
    }
}

TEST(RegionEffect, aMaskHidesWhatWasThereAndTakesTheColoursAround) {
    Image source(60, 40);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 60; ++x) {
            auto const isSecret = x >= 20 && x < 40 && y >= 10 && y < 30;
            auto* p = source.row(y) + 4 * x;
            p[0] = isSecret ? 255 : 40;
            p[1] = x < 30 ? 60 : 180;
            p[2] = isSecret ? 0 : 90;
            p[3] = 255;
        }
    for (auto const backend : {CompositorBackend::reference, CompositorBackend::cpu}) {
        Image target(60, 40);
        apply(backend, {{}, {60, 40}, {20 / 60.0f, 0.25f}, {20 / 60.0f, 0.5f}, 0, RegionMode::mask}, source.view(),
              target.view());
        for (int x = 20; x < 40; ++x) {
            EXPECT_NEAR(at(target, x, 20).r, 40, 1) << x;
            EXPECT_NEAR(at(target, x, 20).b, 90, 1) << x;
        }
        EXPECT_LT(at(target, 20, 20).g, 80) << "the left side is like the left of it";
        EXPECT_GT(at(target, 39, 20).g, 160);
        EXPECT_EQ(at(target, 19, 20).g, 60);
    }
}

}
