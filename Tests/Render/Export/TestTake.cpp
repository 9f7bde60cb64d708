#include "TestTake.h"

#include <TavaroMedia/Frames/EncoderPicture.h>
#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroMedia/Movie/MovieWriter.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <unistd.h>

namespace tavaro {

namespace {

constexpr int width = 320;
constexpr int height = 180;
constexpr int rate = 30;

/// Soft shading, eight blocks that spell the frame's number in binary, and a bar that moves with it.
void drawNumber(Image& image, int number) {
    for (int y = 0; y < height; ++y) {
        auto* pixel = image.row(y);
        for (int x = 0; x < width; ++x, pixel += 4) {
            pixel[0] = static_cast<std::uint8_t>(40 + x / 2);
            pixel[1] = static_cast<std::uint8_t>(60 + y / 2);
            pixel[2] = 120;
            pixel[3] = 255;
            if (y < 40) pixel[0] = pixel[1] = pixel[2] = (number >> (x / 40)) & 1 ? 230 : 20;
            if (y > 140 && std::abs(x - (number * 3) % width) < 10) pixel[0] = pixel[1] = 240;
        }
    }
}

void writeMovie(std::filesystem::path const& file, int frames) {
    MovieWriter writer(file, {.width = width, .height = height, .fps = rate, .bitrate = 8'000'000});
    Image image(width, height);
    for (int n = 0; n < frames; ++n) {
        drawNumber(image, n);
        auto picture = writer.picture();
        fillPicture(picture, image.view());
        writer.append(std::move(picture), n / double(rate));
    }
    writer.finish();
}

}

TestTake::TestTake(std::string const& name, int frames)
    : folder(std::filesystem::path(testing::TempDir()) / ("tavaro-" + name + "-" + std::to_string(getpid())))
    , package(folder / "Take.recproj") {
    std::filesystem::remove_all(folder);
    package.createDirectories();
    writeMovie(package.assetURL("screen.mp4"), frames);
    project.sourceSize = {width, height};
    project.canvas = {640, 360};
    project.timeline.clips = {{.asset = "screen.mp4", .duration = frames / double(rate)}};
    project.background.content = BackgroundStyle::LinearGradient{};
    project.screen = {.padding = 0.06, .cornerRadius = 12, .shadowRadius = 40, .shadowOpacity = 0.4};
    auto& metadata = project.metadata.edit();
    metadata.captureSize = project.sourceSize;
    for (int i = 0; i <= 60 * frames / rate; ++i) {
        metadata.cursorSamples.push_back({i / 60.0, {0.5 + 0.4 * std::sin(i / 25.0), 0.5 + 0.3 * std::cos(i / 40.0)}});
    }
    settings = {.size = {640, 360}, .fps = 30, .bitrateOverride = 20'000'000, .includesAudio = false};
}

TestTake::~TestTake() { std::filesystem::remove_all(folder); }

int TestTake::filesLeft() const {
    int count = 0;
    for (auto const& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path() != package.url()) ++count;
    }
    return count;
}

bool samePixels(ImageView a, ImageView b) {
    if (a.width != b.width || a.height != b.height) return false;
    for (int y = 0; y < a.height; ++y) {
        if (std::memcmp(a.row(y), b.row(y), 4 * std::size_t(a.width)) != 0) return false;
    }
    return true;
}

double psnr(ImageView a, ImageView b) {
    EXPECT_EQ(a.width, b.width);
    EXPECT_EQ(a.height, b.height);
    double squares = 0;
    for (int y = 0; y < a.height; ++y) {
        for (int i = 0; i < 4 * a.width; ++i) {
            double const difference = i % 4 == 3 ? 0 : a.row(y)[i] - b.row(y)[i];
            squares += difference * difference;
        }
    }
    double const mean = squares / (3.0 * a.width * a.height);
    return mean == 0 ? 100 : 10 * std::log10(255 * 255 / mean);
}

Image movieFrame(std::filesystem::path const& movie, int number, int fps) {
    Image image;
    FrameConverter().convert(MovieReader(movie).frame((number + 0.5) / fps), image);
    return image;
}

}
