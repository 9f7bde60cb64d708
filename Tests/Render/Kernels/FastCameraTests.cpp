#include "Guarded.h"

#include <cstring>
#include <limits>

#include <TavaroCore/Looks/CubeLUT.h>
#include <TavaroCore/Style/CameraLook.h>
#include <TavaroRender/Kernels/CameraUniforms.h>
#include <TavaroRender/Renderer/Private/Reach.h>

#include <hwy/targets.h>

namespace tavaro {

using namespace scenes;

namespace {

struct CameraScene {
    CameraUniforms uniforms;
    Image camera;
    Image matte;
    std::optional<CubeLUT> lut;
    int width = 0;
    int height = 0;
};

CubeLUT randomLUT(Random& random) {
    auto lut = CubeLUT::identity(2 + random.upTo(10));
    for (auto& value : lut.values) value += random.between(-0.1f, 0.1f);
    return lut;
}

void giveLook(Random& random, CameraScene& scene) {
    auto& u = scene.uniforms;
    auto const look = static_cast<CameraLook>(random.upTo(12));
    setGrade(u, grade(look), random.chance(0.6f) ? 1 : random.between(0, 1));
    if (look == CameraLook::lut) scene.lut = randomLUT(random);
    u.useLUT = scene.lut.has_value();
    if (random.chance(0.2f)) {
        u.grade0 = {random.between(-3, 3), random.between(0, 2.5f), random.between(0, 2), random.between(-1, 1)};
        u.grade1 = {random.between(-1, 1), random.between(-0.2f, 0.2f), random.between(0, 1), random.between(0, 1)};
    }
    if (random.chance(0.3f)) u.sharpen = random.between(0, 1.5f);
}

void placeBox(Random& random, CameraScene& scene) {
    auto& u = scene.uniforms;
    auto const width = static_cast<float>(scene.width);
    auto const height = static_cast<float>(scene.height);
    u.canvasSize = {width, height};
    u.center = {random.between(-0.2f, 1.2f) * width, random.between(-0.2f, 1.2f) * height};
    u.halfSize = {random.between(0.2f, 0.6f * width), random.between(0.2f, 0.6f * height)};
    if (random.chance(0.3f)) u.halfSize.y = u.halfSize.x;
    if (random.chance(0.1f)) u.halfSize = {width * 2, height * 2};
    if (random.chance(0.2f)) { // a pane: all of the canvas
        u.center = {width / 2, height / 2};
        u.halfSize = u.center;
    }
    u.cornerRadius = random.chance(0.4f) ? 1000 : random.between(0, 0.4f * width);
    if (random.chance(0.2f)) u.cornerRadius = 0;
    if (random.chance(0.6f)) u.borderWidth = random.between(0, 8);
    u.borderColor = random.color();
    if (random.chance(0.7f)) u.shadowOpacity = random.between(0, 1);
    u.opacity = random.chance(0.7f) ? 1 : random.between(0, 1);
    u.mirrored = random.chance(0.5f);
    if (random.chance(0.4f)) {
        u.cropOrigin = {random.between(0, 0.5f), random.between(0, 0.5f)};
        u.cropSize = {random.between(0.05f, 0.5f), random.between(0.05f, 0.5f)};
    }
}

CameraScene randomCamera(unsigned seed) {
    Random random(seed);
    CameraScene scene;
    scene.width = 1 + random.upTo(140);
    scene.height = 1 + random.upTo(90);
    scene.camera = random.chance(0.1f) ? picture(random, 1 + random.upTo(2), 1 + random.upTo(2))
                                       : picture(random, 1 + random.upTo(300), 1 + random.upTo(200));
    placeBox(random, scene);
    giveLook(random, scene);
    if (random.chance(0.35f)) {
        scene.matte = picture(random, 1 + random.upTo(80), 1 + random.upTo(60));
        scene.uniforms.useMatte = random.chance(0.9f);
    }
    return scene;
}

void draw(CompositorBackend backend, CameraScene const& scene, MutableImageView canvas) {
    Compositor(backend).cameraOverlay(scene.uniforms, scene.camera.view(), scene.matte.view(),
                                      scene.lut ? &*scene.lut : nullptr, canvas);
}

}

TEST(FastCamera, theFormulasChangeNothingBeyondTheReach) {
    for (unsigned seed = 1; seed <= 800; ++seed) {
        auto const scene = randomCamera(seed);
        auto const bounds = reach(scene.uniforms);
        if (!bounds) continue;
        Random random(seed);
        auto const before = picture(random, scene.width, scene.height);
        auto after = before.copy();
        draw(CompositorBackend::reference, scene, after.view());
        for (int y = 0; y < scene.height; ++y)
            for (int x = 0; x < scene.width; ++x) {
                bool const isReached =
                    x + 1 > bounds->left && x < bounds->right && y + 1 > bounds->top && y < bounds->bottom;
                if (isReached) continue;
                ASSERT_EQ(std::memcmp(before.row(y) + 4 * x, after.row(y) + 4 * x, 4), 0)
                    << "seed " << seed << " at " << x << ", " << y;
            }
    }
}

TEST(FastCamera, drawsTheSamePixelsOnEveryVectorUnit) {
    for (unsigned seed = 1; seed <= 600; ++seed) {
        auto const scene = randomCamera(seed);
        Random random(seed);
        auto const canvas = picture(random, scene.width, scene.height);
        auto const onCanvas = [&](MutableImageView on) { draw(CompositorBackend::cpu, scene, on); };
        ASSERT_EQ(differenceOfVectorUnits(canvas, onCanvas), "") << "seed " << seed;
    }
}

TEST(FastCamera, staysWithinOneStepOfTheFormulasAndInsideTheCanvas) {
    auto areAllEqual = true;
    auto const targets = hwy::SupportedAndGeneratedTargets();
    for (unsigned seed = 1; seed <= 1500; ++seed) {
        VectorUnit const unit(targets[seed % targets.size()]);
        auto const scene = randomCamera(seed);
        Random random(seed);
        Guarded const before(random, scene.width, scene.height);
        auto wanted = before;
        auto got = before;
        draw(CompositorBackend::reference, scene, wanted.view());
        draw(CompositorBackend::cpu, scene, got.view());
        auto const d = difference(wanted.view(), got.view());
        auto const& u = scene.uniforms;
        ASSERT_LE(d.largest, 1) << "seed " << seed << " at " << d.x << ", " << d.y << " of " << scene.width << "×"
                                << scene.height << ": matte " << u.useMatte << ", LUT " << u.useLUT << ", sharpen "
                                << u.sharpen << ", opacity " << u.opacity << ", border " << u.borderWidth;
        ASSERT_EQ(changedAround(before, got), "") << "seed " << seed;
        areAllEqual = areAllEqual && d.largest == 0;
    }
    EXPECT_FALSE(areAllEqual) << "the formulas were compared with themselves";
}

TEST(FastCamera, drawsTheNextLookAfterTheLastOnesCurvesWereKept) {
    Random random(5);
    auto scene = randomCamera(21);
    scene.uniforms.useMatte = 0;
    Compositor compositor(CompositorBackend::cpu);
    for (auto const look : cameraLookPresets()) {
        setGrade(scene.uniforms, grade(look), 1);
        Image wanted(scene.width, scene.height);
        auto got = wanted.copy();
        draw(CompositorBackend::reference, scene, wanted.view());
        compositor.cameraOverlay(scene.uniforms, scene.camera.view(), {}, nullptr, got.view());
        EXPECT_LE(difference(wanted.view(), got.view()).largest, 1) << displayName(look);
    }
}

TEST(FastCamera, takesNoPictureOrNoBoxForNothingToDraw) {
    Random random(3);
    Guarded const before(random, 40, 30);
    for (auto const backend : {CompositorBackend::reference, CompositorBackend::cpu}) {
        auto scene = randomCamera(2);
        auto const expectUntouched = [&](CameraScene const& drawn, char const* why) {
            auto canvas = before;
            draw(backend, drawn, canvas.view());
            EXPECT_EQ(difference(before.whole.view(), canvas.whole.view()).largest, 0) << why;
        };
        scene.uniforms.halfSize = {0, 20};
        expectUntouched(scene, "no width");
        scene.uniforms.halfSize = {20, std::numeric_limits<float>::quiet_NaN()};
        expectUntouched(scene, "a height that is not a number");
        scene.uniforms.halfSize = {20, 20};
        scene.uniforms.opacity = 0;
        expectUntouched(scene, "no opacity");
        scene.uniforms.opacity = 1;
        scene.camera = Image();
        expectUntouched(scene, "no picture");
    }
}

}
