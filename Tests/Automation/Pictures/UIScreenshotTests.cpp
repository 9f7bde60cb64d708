#include "../../Capture/TemporaryFolder.h"
#include "../../Capture/TestDisplay.h"

#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroAutomation/Pictures/Private/Downscaled.h>
#include <TavaroAutomation/Pictures/Private/UIScreenshot.h>
#include <TavaroMedia/Frames/PNG.h>

#include <cmath>
#include <fstream>
#include <random>

namespace tavaro {

namespace {

constexpr std::uint32_t red = 0xe01020, blue = 0x1020e0, green = 0x10e020;

std::uint32_t colorAt(Image const& image, int x, int y) {
    auto const* const pixel = image.row(y) + 4 * static_cast<std::ptrdiff_t>(x);
    return static_cast<std::uint32_t>(pixel[0]) << 16 | static_cast<std::uint32_t>(pixel[1]) << 8 | pixel[2];
}

}

class UIScreenshotTest : public DisplayTest {
protected:
    UIScreenshot shoot(ScreenshotRequest request) {
        request.display = display->name();
        return takeScreenshot(request);
    }
    Image decoded(UIScreenshot const& screenshot) {
        std::ofstream(folder.path() / "shot.png", std::ios::binary) << screenshot.png;
        auto image = readPNG(folder.path() / "shot.png");
        EXPECT_EQ(image.width(), screenshot.width);
        EXPECT_EQ(image.height(), screenshot.height);
        return image;
    }

    TemporaryFolder folder;
};

TEST_F(UIScreenshotTest, aPixelIsWhereTheCaptionSays) {
    client->makeWindow({.frame = {0, 0, 640, 480}, .windowClass = "Desk", .color = blue});
    client->makeWindow({.frame = {333, 207, 8, 8}, .windowClass = "Mark", .color = red, .isPopup = true});
    for (int const longest : {640, 320, 501, 1000}) {
        auto const shot = shoot({.longestSide = longest});
        auto const image = decoded(shot);
        EXPECT_EQ(std::max(shot.width, shot.height), std::min(longest, 640));
        EXPECT_EQ(shot.frame, (UIRect{0, 0, 640, 480}));
        int marked = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (colorAt(image, x, y) != red) continue;
                ++marked;
                auto const point = shot.point(x + 0.5, y + 0.5);
                EXPECT_TRUE((UIRect{333, 207, 8, 8}.contains(point))) << point.x << " " << point.y;
            }
        }
        EXPECT_GT(marked, 3) << longest;
    }
    auto const caption = shoot({.longestSide = 320}).caption("");
    EXPECT_EQ(caption, "The main display, 320 × 240 pixels, covering screen points x 0–640, y 0–480. To click a pixel "
                       "(px, py): x = 0 + px × 640 ÷ 320, y = 0 + py × 480 ÷ 240.");
}

TEST_F(UIScreenshotTest, aWindowShowsWhatItShowsAlsoCoveredAndOffTheScreen) {
    auto const window = client->makeWindow({.frame = {100, 80, 200, 120}, .windowClass = "Page", .color = green});
    auto const inTheOpen = shoot({.window = window});
    EXPECT_EQ(inTheOpen.frame, (UIRect{100, 80, 200, 120}));
    EXPECT_EQ(inTheOpen.caption("Page"), "The window “Page”, 200 × 120 pixels, covering screen points x 100–300, y "
                                         "80–200. To click a pixel (px, py): x = 100 + px, y = 80 + py.");
    auto const cover = client->makeWindow({.frame = {150, 100, 300, 300}, .windowClass = "Cover", .color = red});
    EXPECT_EQ(colorAt(decoded(shoot({.window = window})), 100, 60), green) << "covered";
    EXPECT_EQ(colorAt(decoded(shoot({})), 200, 140), red) << "the display shows what is on it";
    client->destroy(cover);
    client->move(window, {-50, 400, 200, 120});
    auto const beyond = shoot({.window = window});
    EXPECT_EQ(beyond.frame, (UIRect{-50, 400, 200, 120}));
    EXPECT_EQ(colorAt(decoded(beyond), 2, 118), green);
    client->destroy(window);
    EXPECT_THROW(shoot({.window = window}), AutomationError);
}

TEST_F(UIScreenshotTest, aPictureOfTooManyBytesIsScaledDown) {
    client->makeWindow({.frame = {0, 0, 640, 480}, .windowClass = "Desk", .color = blue});
    auto const noise = client->makeWindow({.frame = {0, 0, 640, 480}, .windowClass = "Noise", .isPopup = true});
    std::mt19937 random(5);
    for (int i = 0; i < 400; ++i)
        client->fill(noise, {static_cast<int>(random() % 640), static_cast<int>(random() % 480), 9, 7},
                     static_cast<std::uint32_t>(random() & 0xffffff));
    auto const whole = shoot({});
    auto const small = shoot({.mostBytes = whole.png.size() / 2});
    EXPECT_LE(small.png.size(), whole.png.size() / 2);
    EXPECT_LT(small.width, whole.width);
    EXPECT_EQ(small.frame, whole.frame);
}

TEST(Downscaled, keepsTheMeanOfEveryChannelAtAnySize) {
    std::mt19937 random(11);
    Image image(97, 61);
    double sums[3] = {};
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            for (int channel = 0; channel < 3; ++channel) {
                auto const value = static_cast<std::uint8_t>(random());
                image.row(y)[4 * x + channel] = value;
                sums[channel] += value;
            }
        }
    }
    for (auto const& [width, height] : {std::pair{48, 30}, {97, 61}, {31, 60}, {1, 1}}) {
        auto const small = downscaled(image.view(), width, height);
        for (int channel = 0; channel < 3; ++channel) {
            double sum = 0;
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x) sum += small.row(y)[4 * x + channel];
            EXPECT_NEAR(sum / (width * height), sums[channel] / (97 * 61), 0.51) << width << "×" << height;
        }
    }
}

}
