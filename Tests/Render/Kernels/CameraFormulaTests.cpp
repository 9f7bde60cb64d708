#include "Scenes.h"

#include <array>
#include <cmath>

#include <gtest/gtest.h>

#include <TavaroCore/Looks/CubeLUT.h>
#include <TavaroCore/Style/CameraLook.h>
#include <TavaroRender/Kernels/CameraUniforms.h>

namespace tavaro {

using namespace scenes;

namespace {

constexpr int side = 200;

/// Every column has a red of its own and every row a green.
Image ramp(int width, int height) {
    Image image(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            auto* p = image.row(y) + 4 * x;
            p[0] = static_cast<std::uint8_t>(x * 255 / (width - 1));
            p[1] = static_cast<std::uint8_t>(y * 255 / (height - 1));
            p[3] = 255;
        }
    return image;
}

/// A square of 100 px in the middle of the canvas, nothing but picture.
CameraUniforms square() {
    CameraUniforms u;
    u.canvasSize = {side, side};
    u.center = {100, 100};
    u.halfSize = {50, 50};
    return u;
}

Image drawnOver(CameraUniforms const& u, Image const& camera, Pixel canvasColor = {0, 0, 0, 255},
                Image const& matte = Image(), CubeLUT const* lut = nullptr) {
    auto canvas = filled(side, side, canvasColor);
    Compositor(CompositorBackend::reference).cameraOverlay(u, camera.view(), matte.view(), lut, canvas.view());
    return canvas;
}

using Color = std::array<double, 3>;

Color drawnColor(CameraUniforms const& u, Pixel shown, int x = 100, int y = 100) {
    auto const p = at(drawnOver(u, filled(8, 8, shown)), x, y);
    return {p.r / 255.0, p.g / 255.0, p.b / 255.0};
}

/// What the look should make of a colour, by the transfer curve's definition, in double precision.
Color expected(CameraGrade const& g, Color color, double corner) {
    auto const decode = [](double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
    auto const encode = [](double v) { return v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055; };
    Color const balance{1 + 0.5 * g.temperature + 0.12 * g.tint, 1 - 0.22 * g.tint,
                        1 - 0.5 * g.temperature + 0.12 * g.tint};
    for (std::size_t c = 0; c < 3; ++c) {
        auto v = std::clamp(encode(decode(color[c]) * std::pow(2, g.exposure) * balance[c]), 0.0, 1.0);
        v = (v - 0.5) * g.contrast + 0.5;
        color[c] = v + (1 - v) * g.lift;
    }
    auto const grey = 0.2126 * color[0] + 0.7152 * color[1] + 0.0722 * color[2];
    auto const ease = [](double t) { return t * t * (3 - 2 * t); };
    auto const bright = ease(std::clamp((grey - 0.2) / 0.6, 0.0, 1.0));
    Color const teal{-0.04, 0.02, 0.06};
    Color const orange{0.06, 0.02, -0.05};
    auto const shade = 1 - 0.6 * g.vignette * ease(std::clamp((corner * 1.414 - 0.35) / 0.6, 0.0, 1.0));
    for (std::size_t c = 0; c < 3; ++c) {
        auto const toned =
            grey + (color[c] - grey) * g.saturation + g.splitTone * (teal[c] + (orange[c] - teal[c]) * bright);
        color[c] = std::clamp(toned * shade, 0.0, 1.0);
    }
    return color;
}

}

TEST(CameraLooks, everyLookIsItsEightNumbersInTheirOrder) {
    Pixel const colors[]{{200, 140, 120, 255}, {30, 60, 160, 255}, {250, 240, 230, 255}, {8, 12, 10, 255}};
    for (std::size_t i = 0; i < namesOf(CameraLook()).size(); ++i) {
        auto const look = static_cast<CameraLook>(i);
        auto u = square();
        setGrade(u, grade(look), 1);
        for (auto const& color : colors) {
            // The middle, and near a corner, where vignettes are.
            for (int const place : {100, 145}) {
                auto const got = drawnColor(u, color, place, place);
                auto const fromMiddle = (place + 0.5 - 100) / 100 * std::sqrt(2);
                auto const wanted =
                    expected(grade(look), {color.r / 255.0, color.g / 255.0, color.b / 255.0}, fromMiddle);
                for (std::size_t c = 0; c < 3; ++c)
                    EXPECT_NEAR(got[c], wanted[c], 0.6 / 255)
                        << displayName(look) << ", channel " << c << " of " << color.r << " at " << place;
            }
        }
    }
}

TEST(CameraLooks, strengthBlendsWithTheColourAsItWas) {
    Pixel const skin{200, 140, 120, 255};
    auto u = square();
    setGrade(u, grade(CameraLook::noir), 0);
    EXPECT_EQ(at(drawnOver(u, filled(8, 8, skin)), 100, 100), skin);
    u.lookStrength = 1;
    auto const whole = drawnColor(u, skin);
    u.lookStrength = 0.25f;
    auto const quarter = drawnColor(u, skin);
    EXPECT_NEAR(quarter[0], 200 / 255.0 * 0.75 + whole[0] * 0.25, 0.6 / 255);
    EXPECT_NEAR(quarter[2], 120 / 255.0 * 0.75 + whole[2] * 0.25, 0.6 / 255);
}

TEST(CameraLooks, theTableComesLastAndOnlyWhenAskedFor) {
    auto inverted = CubeLUT::identity(5);
    for (auto& value : inverted.values) value = 1 - value;
    auto u = square();
    auto const camera = filled(8, 8, {200, 100, 40, 255});
    u.lookStrength = 1;
    EXPECT_EQ(at(drawnOver(u, camera, {}, {}, &inverted), 100, 100), (Pixel{200, 100, 40, 255}));
    u.useLUT = 1;
    EXPECT_EQ(at(drawnOver(u, camera, {}, {}, &inverted), 100, 100), (Pixel{55, 155, 215, 255}));
    EXPECT_EQ(at(drawnOver(u, camera), 100, 100), (Pixel{200, 100, 40, 255})) << "no table, no change";
    setGrade(u, {.exposure = 9}, 1);
    EXPECT_EQ(at(drawnOver(u, camera, {}, {}, &inverted), 100, 100), (Pixel{0, 0, 0, 255}))
        << "white by the grade, then inverted";
}

TEST(CameraOverlay, fillsTheBoxFromTheMiddleOfThePictureMirroredOrCropped) {
    auto const camera = ramp(400, 200); // twice as wide as the box
    auto u = square();
    auto const plain = drawnOver(u, camera);
    EXPECT_NEAR(at(plain, 51, 100).r, 255 * 0.25 + 2, 2) << "the outer quarters do not show";
    EXPECT_NEAR(at(plain, 148, 100).r, 255 * 0.75 - 2, 2);
    EXPECT_NEAR(at(plain, 100, 51).g, 4, 2) << "all of the height does";
    EXPECT_NEAR(at(plain, 100, 148).g, 251, 2);
    u.mirrored = 1;
    auto const mirrored = drawnOver(u, camera);
    for (int x = 55; x < 145; x += 10) EXPECT_NEAR(at(mirrored, x, 80).r, at(plain, 199 - x, 80).r, 1) << x;
    u.mirrored = 0;
    u.cropOrigin = {0.5f, 0.5f};
    u.cropSize = {0.25f, 0.5f}; // square
    auto const cropped = drawnOver(u, camera);
    EXPECT_NEAR(at(cropped, 51, 51).r, 128, 2);
    EXPECT_NEAR(at(cropped, 148, 51).r, 191, 2);
    EXPECT_NEAR(at(cropped, 51, 51).g, 128, 2);
    EXPECT_NEAR(at(cropped, 51, 148).g, 255, 2);
}

TEST(CameraOverlay, drawsShadowBelowPictureBelowBorder) {
    auto u = square();
    u.halfSize = {50, 50};
    u.cornerRadius = 1000;
    u.shadowOpacity = 0.5f;
    u.borderWidth = 6;
    u.borderColor = {1, 0, 0, 1};
    auto const camera = filled(8, 8, {0, 0, 255, 255});
    auto const drawn = drawnOver(u, camera, {255, 255, 255, 255});
    EXPECT_EQ(at(drawn, 100, 100), (Pixel{0, 0, 255, 255}));
    EXPECT_EQ(at(drawn, 50, 100), (Pixel{255, 0, 0, 255})) << "the line lies on the edge";
    EXPECT_LT(at(drawn, 60, 145).r, 255) << "a circle, whatever the radius: the corner is shadow";
    EXPECT_LT(at(drawn, 100, 157).r, at(drawn, 100, 42).r) << "the shadow falls downward";
    EXPECT_EQ(at(drawn, 100, 20), (Pixel{255, 255, 255, 255}));
    auto const overNothing = drawnOver(u, camera, {0, 0, 0, 0});
    EXPECT_EQ(at(overNothing, 100, 100).a, 255);
    EXPECT_GT(at(overNothing, 100, 160).a, 20) << "a shadow raises alpha";
    EXPECT_EQ(at(overNothing, 100, 20).a, 0);
    u.opacity = 0.5f;
    EXPECT_NEAR(at(drawnOver(u, camera, {255, 255, 255, 255}), 100, 100).b, 255 * (1 - 0.25) * 0.5 + 127.5, 1.5)
        << "the shadow shows through";
}

TEST(CameraOverlay, cutsThePersonOutOfTheRoomWithAShadowOfItsShape) {
    auto u = square();
    u.useMatte = 1;
    u.shadowOpacity = 1;
    u.halfSize = {80, 80};
    u.borderWidth = 9;
    u.borderColor = {1, 0, 0, 1};
    Image matte(160, 160); // the person is the middle third
    for (int y = 53; y < 107; ++y)
        for (int x = 53; x < 107; ++x) matte.row(y)[4 * x] = 255;
    auto const camera = filled(16, 16, {0, 200, 0, 255});
    auto const drawn = drawnOver(u, camera, {255, 255, 255, 255}, matte);
    EXPECT_EQ(at(drawn, 100, 100), (Pixel{0, 200, 0, 255}));
    EXPECT_EQ(at(drawn, 40, 40), (Pixel{255, 255, 255, 255})) << "no room, no box, no border";
    EXPECT_EQ(at(drawn, 20, 100), (Pixel{255, 255, 255, 255}));
    EXPECT_EQ(at(drawn, 100, 128), (Pixel{102, 102, 102, 255})) << "0.3 × 2 of the shadow, 2.8 px below";
    EXPECT_EQ(at(drawn, 100, 71), (Pixel{255, 255, 255, 255})) << "and none above";
    u.mirrored = 1;
    matte.row(80)[4 * 20] = 255;
    auto const mirrored = drawnOver(u, camera, {255, 255, 255, 255}, matte);
    EXPECT_NE(at(mirrored, 100 + 59, 100).r, 255) << "the matte is mirrored with the picture";
    u.useMatte = 0;
    EXPECT_EQ(at(drawnOver(u, camera, {255, 255, 255, 255}, matte), 40, 40), (Pixel{0, 200, 0, 255}));
}

TEST(CameraOverlay, sharpeningCrispsEdgesAndLeavesEvenAreasAlone) {
    Image camera(100, 100);
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x) {
            auto* p = camera.row(y) + 4 * x;
            p[0] = p[1] = p[2] = static_cast<std::uint8_t>(std::clamp(80 + (x - 46) * 10, 80, 160)); // a soft edge
            p[3] = 255;
        }
    auto u = square();
    auto const soft = drawnOver(u, camera);
    u.sharpen = 1;
    auto const sharp = drawnOver(u, camera);
    EXPECT_EQ(at(sharp, 70, 100), at(soft, 70, 100));
    EXPECT_LT(at(sharp, 97, 100).r, at(soft, 97, 100).r) << "darker before the edge";
    EXPECT_GT(at(sharp, 103, 100).r, at(soft, 103, 100).r) << "lighter past it";
    auto const slack = 30 * 0.08; // of the five samples' range
    for (int x = 51; x < 149; ++x) {
        EXPECT_GE(at(sharp, x, 100).r, 80 - slack - 1) << x;
        EXPECT_LE(at(sharp, x, 100).r, 160 + slack + 1) << x;
    }
}

}
