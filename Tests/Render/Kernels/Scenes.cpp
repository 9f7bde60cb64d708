#include "Scenes.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

#include <hwy/targets.h>

namespace tavaro::scenes {

Image picture(Random& random, int width, int height) {
    Image image(width, height);
    auto const cell = 1 + random.upTo(12);
    auto const noise = random.chance(0.3f);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            auto* p = image.row(y) + 4 * x;
            auto const isInk = ((x / cell) ^ (y / (cell + 1))) & 1;
            p[0] = static_cast<std::uint8_t>(isInk ? 255 : x * 255 / std::max(width, 1));
            p[1] = static_cast<std::uint8_t>(isInk ? 0 : y * 255 / std::max(height, 1));
            p[2] = static_cast<std::uint8_t>(noise ? random.upTo(255) : isInk * 255);
            p[3] = 255;
        }
    return image;
}

namespace {

void placeScreen(Random& random, CompositeUniforms& u, float width, float height) {
    auto const margin = random.chance(0.15f) ? random.between(-0.3f, 0.0f) : random.between(0.0f, 0.3f);
    u.contentSize = {width * (1 - 2 * margin), height * random.between(0.5f, 1 - margin)};
    u.contentOrigin = {width * margin + random.between(-2, 2), (height - u.contentSize.y) / 2};
    if (random.chance(0.5f)) u.contentOrigin = {std::round(u.contentOrigin.x), std::round(u.contentOrigin.y)};
    if (random.chance(0.5f)) u.contentSize = {std::round(u.contentSize.x), std::round(u.contentSize.y)};
    if (random.chance(0.03f)) u.contentSize = {};
    if (u.frameMode != FrameMode::none || random.chance(0.1f)) {
        auto const side = random.between(0, 0.06f) * width;
        u.frameInset = {side, random.between(0, 0.1f) * width, side, random.between(0, 0.12f) * width};
    }
    u.clipOrigin = {u.contentOrigin.x - u.frameInset.x, u.contentOrigin.y - u.frameInset.y};
    u.clipSize = {u.contentSize.x + u.frameInset.x + u.frameInset.z, u.contentSize.y + u.frameInset.y + u.frameInset.w};
    if (random.chance(0.05f)) u.clipSize = {};
    if (random.chance(0.1f)) u.clipSize.x *= 0.6f; // a pane of a split, which the recording overflows
    if (random.chance(0.15f)) {                    // a canvas or a device that the recording fills and overflows
        Float2 const over{random.between(0, 0.5f) * width, random.between(0, 0.5f) * height};
        u.contentOrigin = {u.contentOrigin.x - over.x * random.between(0, 1), u.contentOrigin.y};
        u.contentSize = {u.contentSize.x + over.x, u.contentSize.y + over.y};
    }
}

void moveCamera(Random& random, CompositeUniforms& u) {
    u.zoomCenter = {random.between(-0.1f, 1.1f), random.between(-0.1f, 1.1f)};
    constexpr float scales[]{1, 1, 1.6f, 2.5f, 4, 0.7f, 0.05f, 0, -1};
    u.zoomScale = random.chance(0.3f) ? random.between(0.8f, 3) : scales[random.upTo(8)];
    u.sharpen = random.chance(0.6f) ? random.between(0, 1.5f) : 0;
    if (random.chance(0.05f)) u.sharpen = 8;
    if (random.chance(0.25f)) {
        u.blurStrength = 1;
        u.blurTaps = random.upTo(20);
        u.blurVector = {random.between(-0.2f, 0.2f), random.between(-0.2f, 0.2f)};
    }
    if (random.chance(0.3f)) {
        u.cropOrigin = {random.between(0, 0.4f), random.between(0, 0.4f)};
        u.cropSize = {random.between(0.1f, 0.6f), random.between(0.1f, 0.6f)};
    }
}

void styleEdges(Random& random, CompositeUniforms& u, float size) {
    u.cornerRadius = random.chance(0.7f) ? random.between(0, size * 0.2f) : size * 3;
    u.frameRadius = random.between(0, size * 0.2f);
    u.innerRadius = random.between(0, size * 0.2f);
    u.borderWidth = random.chance(0.5f) ? random.between(0, 5) : 0;
    u.borderColor = random.color();
    u.shadowColor = random.color();
    u.shadowRadius = random.chance(0.7f) ? random.between(0, size * 0.3f) : 0;
    u.shadowOffsetY = random.between(-5, 15);
    u.shadowOpacity = random.between(0, 1);
    u.matColor = random.color();
    if (random.chance(0.5f)) u.frameTint = random.color();
}

void placeLoupe(Random& random, CompositeUniforms& u, float width, float height) {
    if (!random.chance(0.35f)) return;
    u.loupeCenter = {random.between(0, width), random.between(0, height)};
    u.loupeRadius = random.between(0, std::min(width, height) * 0.5f);
    constexpr float magnifications[]{2, 1, 0.6f, 3.3f};
    u.loupeMag = magnifications[random.upTo(3)];
    u.loupePresence = random.chance(0.7f) ? 1 : random.between(0, 0.5f);
}

}

Scene randomScene(unsigned seed) {
    Random random(seed);
    Scene scene;
    auto const isTiny = random.chance(0.1f);
    scene.width = isTiny ? 1 + random.upTo(8) : 16 + random.upTo(170);
    scene.height = isTiny ? 1 + random.upTo(8) : 16 + random.upTo(110);
    if (random.chance(0.05f)) {
        scene.width = 380 + random.upTo(600); // several tiles
        scene.height = 1 + random.upTo(60);
    }
    scene.screen = random.chance(0.1f) ? picture(random, 1 + random.upTo(9), 1 + random.upTo(9))
                                       : picture(random, 40 + random.upTo(400), 30 + random.upTo(200));
    if (random.chance(0.02f)) scene.screen = Image();
    if (random.chance(0.7f)) scene.background = picture(random, 1 + random.upTo(80), 1 + random.upTo(60));
    auto& u = scene.uniforms;
    auto const width = static_cast<float>(scene.width);
    auto const height = static_cast<float>(scene.height);
    u.canvasSize = {width, height};
    u.bgMode = static_cast<BackgroundMode>(random.upTo(7));
    u.frameMode = static_cast<FrameMode>(random.chance(0.4f) ? 0 : random.upTo(8));
    u.bgColor0 = random.color();
    u.bgColor1 = random.color();
    u.bgColor2 = random.color();
    u.bgColor3 = random.color();
    u.bgParam = {random.between(-1, 1), random.between(-1, 1)};
    u.time = random.between(0, 100);
    placeScreen(random, u, width, height);
    moveCamera(random, u);
    styleEdges(random, u, std::min(width, height));
    placeLoupe(random, u, width, height);
    return scene;
}

CompositeUniforms plainLook(int width, int height, float padding) {
    CompositeUniforms u;
    auto const w = static_cast<float>(width);
    auto const h = static_cast<float>(height);
    u.canvasSize = {w, h};
    u.contentOrigin = {w * padding, h * padding};
    u.contentSize = {w * (1 - 2 * padding), h * (1 - 2 * padding)};
    u.clipOrigin = u.contentOrigin;
    u.clipSize = u.contentSize;
    u.bgMode = BackgroundMode::linear;
    u.bgColor0 = {0.2f, 0.3f, 0.9f, 1};
    u.bgColor1 = {0.9f, 0.3f, 0.4f, 1};
    u.bgParam = {0.7f, 0.7f};
    u.cornerRadius = h * 0.02f;
    return u;
}

Image drawn(CompositorBackend backend, CompositeUniforms const& uniforms, Image const& screen, Image const& background,
            int width, int height) {
    Image canvas(width, height);
    Compositor(backend).composite(uniforms, ScreenTexture(screen.view()), background.view(), canvas.view());
    return canvas;
}

VectorUnit::VectorUnit(std::int64_t target) {
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(target);
}

VectorUnit::~VectorUnit() {
    hwy::SetSupportedTargetsForTest(0);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

std::string differenceOfVectorUnits(Image const& canvas, FunctionRef<void(MutableImageView)> draw) {
    std::optional<Image> first;
    std::string firstName;
    for (auto const target : hwy::SupportedAndGeneratedTargets()) {
        if ((target & (HWY_SCALAR | HWY_EMU128)) != 0) continue;
        VectorUnit const unit(target);
        auto image = canvas.copy();
        draw(image.view());
        if (!first) {
            first = std::move(image);
            firstName = hwy::TargetName(target);
            continue;
        }
        auto const d = difference(first->view(), image.view());
        if (d.largest > 0)
            return firstName + " and " + hwy::TargetName(target) + " differ by " + std::to_string(d.largest) + " at " +
                   std::to_string(d.x) + ", " + std::to_string(d.y);
    }
    return "";
}

Difference difference(ImageView a, ImageView b) {
    Difference result;
    for (int y = 0; y < a.height; ++y)
        for (int i = 0; i < 4 * a.width; ++i)
            if (auto const d = std::abs(a.row(y)[i] - b.row(y)[i]); d > result.largest) result = {d, i / 4, y};
    return result;
}

Image filled(int width, int height, Pixel color) {
    Image image(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            auto* p = image.row(y) + 4 * x;
            p[0] = static_cast<std::uint8_t>(color.r);
            p[1] = static_cast<std::uint8_t>(color.g);
            p[2] = static_cast<std::uint8_t>(color.b);
            p[3] = static_cast<std::uint8_t>(color.a);
        }
    return image;
}

Pixel at(Image const& image, int x, int y) {
    auto const* p = image.row(y) + 4 * x;
    return {p[0], p[1], p[2], p[3]};
}

}
