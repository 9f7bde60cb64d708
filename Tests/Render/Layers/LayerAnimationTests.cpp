#include <TavaroRender/Layers/Private/LayerAnimation.h>

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace tavaro {

namespace {

constexpr OverlayAnimation animations[] = {
    OverlayAnimation::none,  OverlayAnimation::fade,       OverlayAnimation::slideUp, OverlayAnimation::slideDown,
    OverlayAnimation::scale, OverlayAnimation::typewriter, OverlayAnimation::spring};

Overlay animated(OverlayAnimation animation, double duration = 4) {
    return {
        .start = 10, .duration = duration, .animationIn = animation, .animationOut = animation, .animationDuration = 1};
}

}

TEST(LayerAnimation, betweenItsAnimationsTheWholeLayerIsThere) {
    for (auto const animation : animations) {
        for (double const t : {11.0, 12.0, 13.0}) {
            EXPECT_EQ(overlayPose(animated(animation), t), LayerPose{}) << static_cast<int>(animation) << " at " << t;
        }
    }
}

TEST(LayerAnimation, aLayerComesAndGoesWithoutFlicker) {
    for (auto const animation : animations) {
        auto const overlay = animated(animation);
        double before = -1;
        double typed = -1;
        for (double t = 10; t <= 11; t += 1.0 / 60) {
            auto const in = overlayPose(overlay, t);
            auto const out = overlayPose(overlay, 24 - t); // the other end
            EXPECT_GE(in.opacity, before) << static_cast<int>(animation) << " at " << t;
            EXPECT_GE(in.shown, typed);
            EXPECT_NEAR(in.opacity, out.opacity, 1e-9);
            before = in.opacity;
            typed = in.shown;
        }
        if (animation == OverlayAnimation::none) continue;
        EXPECT_EQ(overlayPose(overlay, 10).opacity, 0) << static_cast<int>(animation);
        EXPECT_EQ(overlayPose(overlay, 14).opacity, 0) << static_cast<int>(animation);
    }
}

TEST(LayerAnimation, slidesRiseIntoPlaceAndGoOnThatWay) {
    auto const up = animated(OverlayAnimation::slideUp);
    EXPECT_GT(overlayPose(up, 10.1).drop, overlayPose(up, 10.4).drop);
    EXPECT_GT(overlayPose(up, 10.4).drop, 0);
    EXPECT_LT(overlayPose(up, 13.9).drop, 0);
    auto const down = animated(OverlayAnimation::slideDown);
    EXPECT_LT(overlayPose(down, 10.1).drop, 0);
    EXPECT_GT(overlayPose(down, 13.9).drop, 0);
}

TEST(LayerAnimation, aSpringSwingsALittlePastItsSizeAndSettles) {
    auto const overlay = animated(OverlayAnimation::spring);
    double largest = 0;
    for (double t = 10; t < 11; t += 0.01) largest = std::max(largest, overlayPose(overlay, t).scale);
    EXPECT_GT(largest, 1.01);
    EXPECT_LT(largest, 1.12);
    EXPECT_NEAR(overlayPose(overlay, 10.99).scale, 1, 0.005);
}

TEST(LayerAnimation, animationsLongerThanTheirLayerShareItsTime) {
    for (auto const animation : animations) {
        auto const middle = overlayPose(animated(animation, 0.5), 10.25);
        EXPECT_NEAR(middle.opacity, 1, 1e-9) << static_cast<int>(animation);
        EXPECT_NEAR(middle.scale, 1, 1e-9);
        EXPECT_NEAR(middle.drop, 0, 1e-9);
        EXPECT_NEAR(middle.shown, 1, 1e-9);
        TitleCard const card{.text = "Hi", .duration = 0.4, .animation = animation};
        EXPECT_NEAR(cardPose(card, 0.2).opacity, 1, 1e-9) << static_cast<int>(animation);
    }
}

TEST(LayerAnimation, timesThatAreNoNumbersAnimateNothing) {
    for (double const seconds :
         {-1.0, 0.0, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        auto overlay = animated(OverlayAnimation::spring);
        overlay.animationDuration = seconds;
        auto const pose = overlayPose(overlay, 12);
        EXPECT_TRUE(std::isfinite(pose.opacity) && std::isfinite(pose.scale)) << seconds;
        EXPECT_EQ(pose.opacity, 1) << seconds;
    }
}

TEST(LayerAnimation, captionsAreWholeForMostOfTheirTime) {
    CaptionCue const cue{.start = 3, .duration = 2, .text = "Hello"};
    for (auto const animation :
         {CaptionAnimation::none, CaptionAnimation::fade, CaptionAnimation::pop, CaptionAnimation::slideUp}) {
        for (double const t : {3.17, 4.0, 4.87}) EXPECT_EQ(captionPose(animation, cue, t), LayerPose{}) << t;
    }
    EXPECT_LT(captionPose(CaptionAnimation::pop, cue, 3.02).scale, 1);
    EXPECT_GT(captionPose(CaptionAnimation::slideUp, cue, 3.02).drop, 0);
}

}
