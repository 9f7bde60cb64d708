#include <TavaroCapture/Camera/Private/CameraMode.h>

#include <gtest/gtest.h>

namespace tavaro {

namespace {

using enum DeviceLayout;

std::string drawn(std::vector<CameraMode> const& modes) {
    auto const mode = chosenMode(modes);
    if (!mode) return "none";
    return std::to_string(mode->width) + "×" + std::to_string(mode->height) +
           (mode->layout == jpeg ? " JPEG" : " raw") + " at " + std::to_string(static_cast<int>(mode->fps));
}

}

TEST(CameraMode, motionComesBeforeSizeAndSizeBeforeTheCostOfDecoding) {
    CameraMode const small{yuyv, 640, 480, 30}, slow{yuyv, 1280, 720, 10}, compressed{jpeg, 1280, 720, 30};
    CameraMode const large{jpeg, 1920, 1080, 30}, huge{jpeg, 3840, 2160, 30};
    EXPECT_EQ(drawn({small, slow, compressed, large}), "1280×720 JPEG at 30");
    EXPECT_EQ(drawn({compressed, small, {nv12, 1280, 720, 30}}), "1280×720 raw at 30");
    EXPECT_EQ(drawn({small, slow}), "640×480 raw at 30") << "ten pictures a second look broken";
    EXPECT_EQ(drawn({slow, {yuyv, 640, 480, 15}}), "640×480 raw at 15") << "the quickest of the slow";
    EXPECT_EQ(drawn({small, large}), "1920×1080 JPEG at 30");
    EXPECT_EQ(drawn({small, huge}), "640×480 raw at 30") << "twelve times the pixels";
    EXPECT_EQ(drawn({{jpeg, 1280, 720, 60}, {jpeg, 1280, 720, 25}}), "1280×720 JPEG at 25");
    EXPECT_EQ(drawn({{yuyv, 1280, 720, 0}, {yuyv, 1280, 720, 5}}), "1280×720 raw at 0") << "it may well be quick";
    EXPECT_EQ(drawn({}), "none");
}

}
