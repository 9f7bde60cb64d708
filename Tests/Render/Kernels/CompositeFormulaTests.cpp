#include "Scenes.h"

#include <cmath>

#include <gtest/gtest.h>

namespace tavaro {

using namespace scenes;

namespace {

constexpr Pixel blue{51, 77, 230, 255};

/// A solid blue canvas of 200 × 120 with the recording in the middle.
CompositeUniforms solidLook() {
    auto u = plainLook(200, 120, 0.2f);
    u.bgMode = BackgroundMode::solid;
    u.bgColor0 = {0.2f, 0.302f, 0.902f, 1};
    return u;
}

Image reference(CompositeUniforms const& u, Image const& screen, Image const& background = Image()) {
    return drawn(CompositorBackend::reference, u, screen, background, static_cast<int>(u.canvasSize.x),
                 static_cast<int>(u.canvasSize.y));
}

int differenceOf(CompositeUniforms const& a, CompositeUniforms const& b, Image const& screen) {
    return difference(reference(a, screen).view(), reference(b, screen).view()).largest;
}

void addFrame(CompositeUniforms& u, int mode, Float4 inset) {
    u.frameMode = static_cast<FrameMode>(mode);
    u.frameInset = inset;
    u.clipOrigin = {u.contentOrigin.x - inset.x, u.contentOrigin.y - inset.y};
    u.clipSize = {u.contentSize.x + inset.x + inset.z, u.contentSize.y + inset.y + inset.w};
}

}

TEST(Composite, besideTheNeckOfAnIMacStandsThePlainBackground) {
    auto u = solidLook();
    addFrame(u, 4, {2, 2, 2, 20});
    u.cornerRadius = 0;
    u.shadowRadius = 3;
    u.shadowOpacity = 1;
    auto const canvas = reference(u, filled(120, 72, {255, 0, 0, 255}));
    auto const chinEnd = 96 + 20 * 0.42;
    auto const beside = static_cast<int>(chinEnd) + 8;
    EXPECT_EQ(at(canvas, 50, beside), blue);
    EXPECT_NE(at(canvas, 100, beside), blue) << "the neck itself";
    EXPECT_NE(at(canvas, 50, static_cast<int>(chinEnd) - 3), blue) << "the chin";
}

TEST(Composite, aCornerRadiusIsNoMoreThanHalfTheSmallerSide) {
    auto const screen = filled(120, 72, {255, 0, 0, 255});
    auto capped = solidLook();
    capped.cornerRadius = 36;
    auto huge = capped;
    huge.cornerRadius = 5000;
    EXPECT_EQ(differenceOf(capped, huge, screen), 0);
}

TEST(Composite, withoutADeviceTheFrameRadiusDoesNothing) {
    auto const screen = filled(120, 72, {255, 0, 0, 255});
    auto plain = solidLook();
    auto framed = plain;
    framed.frameRadius = 30;
    EXPECT_EQ(differenceOf(plain, framed, screen), 0);
    framed.frameMode = plain.frameMode = FrameMode::macbook;
    EXPECT_GT(differenceOf(plain, framed, screen), 0);
}

TEST(Composite, aBackgroundPictureOneWideIsAPlaceholder) {
    auto u = solidLook();
    u.bgMode = BackgroundMode::image;
    auto const grey = Pixel{120, 120, 120, 255};
    EXPECT_EQ(at(reference(u, Image(), filled(1, 4, grey)), 3, 3), (Pixel{0, 0, 0, 255}));
    EXPECT_EQ(at(reference(u, Image(), filled(2, 1, grey)), 3, 3), grey);
}

TEST(Composite, aWideBackgroundPictureIsCutAtItsSides) {
    Image halves(400, 120); // the canvas shows its middle half
    for (int y = 0; y < 120; ++y)
        for (int x = 0; x < 400; ++x) halves.row(y)[4 * x] = x >= 100 && x < 300 ? 255 : 0;
    auto u = solidLook();
    u.bgMode = BackgroundMode::image;
    auto const canvas = reference(u, Image(), halves);
    EXPECT_EQ(at(canvas, 1, 60).r, 255);
    EXPECT_EQ(at(canvas, 198, 60).r, 255);
}

TEST(Composite, zoomOfZeroOrLessIsTheSmallestZoom) {
    Random random(3);
    auto const screen = picture(random, 90, 60);
    auto smallest = solidLook();
    smallest.zoomScale = 0.0001f;
    for (auto const zoom : {0.0f, -3.0f}) {
        auto u = smallest;
        u.zoomScale = zoom;
        EXPECT_EQ(differenceOf(u, smallest, screen), 0) << zoom;
    }
}

TEST(Composite, theIslandOfAPhoneLiesOverTheTopOfTheRecording) {
    auto u = solidLook();
    addFrame(u, 5, {8, 20, 8, 8});
    auto const canvas = reference(u, filled(120, 72, {255, 0, 0, 255}));
    auto const middle = static_cast<int>(24 + 20 * 0.62 * 0.95);
    EXPECT_EQ(at(canvas, 100, middle), (Pixel{5, 5, 6, 255}));
    EXPECT_EQ(at(canvas, 100 + 20, middle), (Pixel{255, 0, 0, 255})) << "past its half-width of 13.8";
    EXPECT_EQ(at(canvas, 100, 24 + 2), (Pixel{255, 0, 0, 255})) << "between bezel and island";
    EXPECT_EQ(at(canvas, 100, 24 - 3), (Pixel{14, 15, 17, 255})) << "the bezel";
}

TEST(Composite, anEmptyClipOrSourceLeavesTheBackgroundAlone) {
    auto u = solidLook();
    u.shadowRadius = 20;
    u.shadowOpacity = 1;
    auto const bare = reference(u, Image());
    EXPECT_EQ(difference(bare.view(), filled(200, 120, blue).view()).largest, 0);
    u.clipSize = {};
    EXPECT_EQ(difference(reference(u, filled(9, 9, {255, 0, 0, 255})).view(), bare.view()).largest, 0);
}

TEST(Composite, shrunkenDetailTurnsIntoItsMean) {
    // Columns one pixel wide, shown at half size: without mip levels they would shimmer.
    Image stripes(240, 144);
    for (int y = 0; y < 144; ++y)
        for (int x = 0; x < 240; ++x) stripes.row(y)[4 * x] = x % 2 ? 255 : 0;
    auto const canvas = reference(solidLook(), stripes);
    for (int x = 60; x < 140; ++x) ASSERT_NEAR(at(canvas, x, 60).r, 128, 1) << x;
}

TEST(Composite, sharpeningKeepsWithinTheColoursAround) {
    Image edge(60, 36);
    for (int y = 0; y < 36; ++y)
        for (int x = 0; x < 60; ++x) edge.row(y)[4 * x] = x < 30 ? 60 : 200;
    auto soft = solidLook();
    soft.zoomScale = 2;
    auto sharp = soft;
    sharp.sharpen = 1;
    auto const softened = reference(soft, edge);
    auto const sharpened = reference(sharp, edge);
    int steeper = 0;
    for (int x = 50; x < 150; ++x) {
        auto const r = at(sharpened, x, 60).r;
        ASSERT_GE(r, 60);
        ASSERT_LE(r, 200);
        steeper = std::max(steeper, std::abs(r - at(softened, x, 60).r));
    }
    EXPECT_GT(steeper, 10);
}

TEST(Composite, theBlurVectorGivesTheLengthAndTheStrengthOnlySwitches) {
    Random random(5);
    auto const screen = picture(random, 120, 72);
    auto u = solidLook();
    u.blurTaps = 9;
    u.blurVector = {0.1f, 0};
    auto const still = u;
    u.blurStrength = 0.002f;
    auto strong = u;
    strong.blurStrength = 1;
    EXPECT_EQ(differenceOf(u, strong, screen), 0);
    EXPECT_GT(differenceOf(u, still, screen), 0);
    strong.blurTaps = 1;
    EXPECT_EQ(differenceOf(strong, still, screen), 0) << "one tap is no blur";
}

TEST(Composite, aGradientMixesInLinearLight) {
    auto u = plainLook(201, 3, 0.2f);
    u.bgColor0 = {0, 0, 0, 1};
    u.bgColor1 = {1, 1, 1, 1};
    u.bgParam = {1, 0};
    // Half of the light is not half of the code value.
    EXPECT_NEAR(at(reference(u, Image()), 100, 1).r, 188, 1);
}

TEST(Composite, theLensShowsRecordedPixelsEnlarged) {
    auto u = solidLook();
    u.zoomScale = 0.5f;
    u.loupeCenter = {100, 60};
    u.loupeRadius = 30;
    u.loupeMag = 2;
    u.loupePresence = 1;
    Random random(11);
    auto const screen = picture(random, 120, 72);
    auto zoomed = solidLook(); // twice as large from the same point is the plain recording
    auto const through = reference(u, screen);
    auto const direct = reference(zoomed, screen);
    for (int x = 92; x < 108; ++x) {
        auto const seen = at(through, x, 64);
        auto const shown = at(direct, x, 64);
        // Past the highlight, the glass changes nothing in the middle.
        ASSERT_NEAR(seen.g, shown.g, 0.22 * 255 * 0.5) << x;
    }
    u.loupePresence = 0.0005f;
    EXPECT_EQ(differenceOf(
                  u,
                  [&] {
                      auto none = u;
                      none.loupeRadius = 0;
                      return none;
                  }(),
                  screen),
              0);
}

TEST(Composite, theShadowOfTheLoupeDarkensButDoesNotCover) {
    CompositeUniforms u;
    u.canvasSize = {200, 120};
    u.bgMode = BackgroundMode::none;
    u.loupeCenter = {100, 60};
    u.loupeRadius = 30;
    u.loupeMag = 2;
    u.loupePresence = 1;
    auto const transparent = reference(u, Image());
    EXPECT_EQ(at(transparent, 100, 96), (Pixel{0, 0, 0, 0}));
    EXPECT_EQ(at(transparent, 100, 60).a, 255);
    u.bgMode = BackgroundMode::solid;
    u.bgColor0 = {1, 1, 1, 1};
    // 36.5 px below the middle, 34.4 from the shadow's: 0.42 of what is left of it at 1.147 radii, 0.198.
    EXPECT_NEAR(at(reference(u, Image()), 100, 96).r, 204, 1);
}

TEST(Composite, ditherStaysWithinHalfAStep) {
    auto u = plainLook(160, 90, 0.2f);
    u.bgColor0 = u.bgColor1 = {100.0f / 255, 50.5f / 255, 1, 1};
    auto const canvas = reference(u, Image());
    bool isDithered = false;
    for (int x = 0; x < 160; ++x) {
        auto const p = at(canvas, x, 40);
        ASSERT_NEAR(p.r, 100, 1);
        ASSERT_NEAR(p.g, 50.5, 0.51);
        isDithered = isDithered || p.g != at(canvas, 0, 40).g;
    }
    EXPECT_TRUE(isDithered);
}

}
