#include "Scenes.h"

#include <cstring>

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <TavaroRender/Renderer/Private/Reach.h>

namespace tavaro {

using namespace scenes;

namespace {

CursorUniforms randomCursor(Random& random, int width, int height) {
    CursorUniforms u;
    auto const size = static_cast<float>(std::max(width, height));
    u.canvasSize = {static_cast<float>(width), static_cast<float>(height)};
    u.position = {random.between(-0.2f, 1.2f) * u.canvasSize.x, random.between(-0.2f, 1.2f) * u.canvasSize.y};
    if (random.chance(0.2f)) u.position = {std::floor(u.position.x) + 0.5f, std::floor(u.position.y) + 0.5f};
    u.fillColor = random.color();
    u.strokeColor = random.color();
    u.clickColor = random.color();
    u.cursorSize = random.chance(0.1f) ? random.between(0, 3) : random.between(0, size * 0.6f);
    u.opacity = random.chance(0.2f) ? 0 : random.between(0, 1);
    u.style = static_cast<CursorShape>(random.upTo(8));
    u.clickEffect = static_cast<ClickShape>(random.upTo(6));
    u.clickRadius = random.between(0, size * 0.5f);
    u.clickProgress = random.between(0, 1);
    u.clickOpacity = random.chance(0.2f) ? 0 : random.between(0, 1);
    if (random.chance(0.5f)) u.velocity = {random.between(-40, 40), random.between(-40, 40)};
    return u;
}

}

TEST(FastCursor, staysWithinOneStepOfTheFormulasAndInsideTheCanvas) {
    auto areAllEqual = true;
    auto const targets = hwy::SupportedAndGeneratedTargets();
    for (unsigned seed = 1; seed <= 1200; ++seed) {
        VectorUnit const unit(targets[seed % targets.size()]);
        Random random(seed);
        auto const width = 1 + random.upTo(150);
        auto const height = 1 + random.upTo(90);
        auto const u = randomCursor(random, width, height);
        auto wanted = picture(random, width + 6, height + 2);
        for (int y = 0; y < wanted.height(); ++y) wanted.row(y)[3] = static_cast<std::uint8_t>(y * 2);
        auto got = wanted.copy();
        auto const inner = [&](Image& image) {
            return MutableImageView{image.row(1) + 12, width, height, image.stride()};
        };
        Compositor(CompositorBackend::reference).cursorOverlay(u, inner(wanted));
        Compositor(CompositorBackend::cpu).cursorOverlay(u, inner(got));
        // Both stand in a larger picture, whose rest must stay as it was.
        auto const d = difference(wanted.view(), got.view());
        ASSERT_LE(d.largest, 1) << "seed " << seed << " at " << d.x - 3 << ", " << d.y - 1 << " of " << width << "×"
                                << height << ": style " << int(u.style) << ", click " << int(u.clickEffect);
        ASSERT_EQ(std::memcmp(wanted.row(0), got.row(0), 4 * static_cast<std::size_t>(wanted.width())), 0);
        areAllEqual = areAllEqual && d.largest == 0;
    }
    EXPECT_FALSE(areAllEqual) << "the formulas were compared with themselves";
}

TEST(FastCursor, drawsTheSamePixelsOnEveryVectorUnit) {
    for (unsigned seed = 1; seed <= 400; ++seed) {
        Random random(seed);
        auto const canvas = picture(random, 1 + random.upTo(150), 1 + random.upTo(90));
        auto const u = randomCursor(random, canvas.width(), canvas.height());
        auto const draw = [&](MutableImageView on) { Compositor().cursorOverlay(u, on); };
        ASSERT_EQ(differenceOfVectorUnits(canvas, draw), "") << "seed " << seed;
    }
}

TEST(FastCursor, theFormulasChangeNothingBeyondTheReach) {
    constexpr int side = 140;
    for (unsigned seed = 1; seed <= 600; ++seed) {
        Random random(seed);
        auto u = randomCursor(random, side, side);
        u.cursorSize = std::min(u.cursorSize, 40.0f);
        u.clickRadius = std::min(u.clickRadius, 45.0f);
        auto const before = picture(random, side, side);
        auto after = before.copy();
        Compositor(CompositorBackend::reference).cursorOverlay(u, after.view());
        auto const bounds = reach(u);
        if (!bounds) continue;
        for (int y = 0; y < side; ++y)
            for (int x = 0; x < side; ++x) {
                bool const isReached =
                    x + 1 > bounds->left && x < bounds->right && y + 1 > bounds->top && y < bounds->bottom;
                if (isReached) continue;
                ASSERT_EQ(std::memcmp(before.row(y) + 4 * x, after.row(y) + 4 * x, 4), 0)
                    << "seed " << seed << " at " << x << ", " << y << ": style " << int(u.style) << ", click "
                    << int(u.clickEffect);
            }
    }
}

}
