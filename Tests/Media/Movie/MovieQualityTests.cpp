#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

#include <TavaroMedia/Frames/FrameConverter.h>
#include <Tests/Capture/TemporaryFolder.h>
#include <Tests/Media/Movie/NumberedMovie.h>

namespace tavaro {
namespace {

constexpr int width = 640;
constexpr int height = 360;
constexpr int fps = 30;

/// Soft hills that pass by, with a grain of their own in each frame.
Image hills(int number) {
    Image image(width, height);
    std::array<double, width> longSine, longCosine,
        shortSine; // along a row, since a picture has too many pixels for them
    for (int x = 0; x < width; ++x) {
        double const u = x + 3 * number;
        longSine[x] = std::sin(u / 31);
        longCosine[x] = std::cos(u / 31);
        shortSine[x] = std::sin(u / 7);
    }
    std::uint32_t grain = static_cast<std::uint32_t>(number) * 2654435761u + 1;
    for (int y = 0; y < height; ++y) {
        double const sine = std::sin(y / 57.0), cosine = std::cos(y / 57.0), shortCosine = std::cos(y / 9.0);
        for (int x = 0; x < width; ++x) {
            grain = grain * 1664525 + 1013904223;
            auto const slow = longSine[x] * cosine + longCosine[x] * sine; // of u / 31 + y / 57
            auto const level = 120 + 50 * slow + 40 * shortSine[x] * shortCosine + static_cast<int>(grain >> 29) - 3.5;
            std::uint8_t const pixel[4] = {static_cast<std::uint8_t>(level), static_cast<std::uint8_t>(level * 0.9),
                                           static_cast<std::uint8_t>(level * 0.7 + 20), 255};
            std::memcpy(image.row(y) + 4 * x, pixel, 4);
        }
    }
    return image;
}

/// The same with grain as dense as an old film's, which no encoder can foretell.
Image grainyHills(int number) {
    auto image = hills(number);
    std::uint32_t grain = static_cast<std::uint32_t>(number) * 40503u + 7;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            grain = grain * 1664525 + 1013904223;
            for (int c = 0; c < 3; ++c)
                image.row(y)[4 * x + c] = static_cast<std::uint8_t>(image.row(y)[4 * x + c] / 2 + (grain >> 27));
        }
    }
    return image;
}

/// A page that is still for a second, then wanders.
Image page(int number) { return numberedImage(width, height, std::max(number - 30, 0)); }

double squaredError(Image const& a, Image const& b) {
    double sum = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < 4 * width; ++x) sum += (a.row(y)[x] - b.row(y)[x]) * (a.row(y)[x] - b.row(y)[x]);
    }
    return sum / (3.0 * width * height);
}

struct Written {
    double decibels = 0;
    double rate = 0; // bits a second
};

struct Film {
    char const* name;
    Image (*drawn)(int);
    std::int64_t bitrate;
    int frames = 90;
};

Written written(std::filesystem::path const& file, MovieCodec codec, Film const& film) {
    auto const& [name, drawn, bitrate, frames] = film;
    MovieWriter writer(file, {.codec = codec, .width = width, .height = height, .fps = fps, .bitrate = bitrate});
    for (int n = 0; n < frames; ++n) {
        auto picture = writer.picture();
        fillPicture(picture, drawn(n).view());
        writer.append(std::move(picture), static_cast<double>(n) / fps);
    }
    writer.finish();
    MovieReader reader(file);
    FrameConverter converter;
    Image image;
    double error = 0;
    for (int n = 0; n < frames; n += 3) {
        converter.convert(reader.frame(static_cast<double>(n) / fps), image);
        error += squaredError(image, drawn(n));
    }
    auto const bits = 8.0 * static_cast<double>(std::filesystem::file_size(file));
    return {10 * std::log10(255 * 255 * (frames / 3.0) / error), bits * fps / frames};
}

TEST(MovieQuality, hevcIsNoWorseThanH264AtTheSameRate) {
    TemporaryFolder folder;
    for (auto const& film :
         {Film{"page", page, 450'000}, {"hills", hills, 450'000}, {"grain", grainyHills, 450'000, 240}}) {
        auto const h264 = written(folder.path() / "h264.mp4", MovieCodec::h264, film);
        auto const hevc = written(folder.path() / "hevc.mp4", MovieCodec::hevc, film);
        EXPECT_GE(hevc.decibels, h264.decibels) << film.name;
        EXPECT_LE(hevc.rate, 1.1 * std::max(static_cast<double>(film.bitrate), h264.rate)) << film.name;
    }
}

}
}
