#include "HourMovie.h"

#include "ScreenScene.h"

#include <TavaroMedia/Frames/EncoderPicture.h>
#include <TavaroMedia/Frames/Image.h>
#include <TavaroMedia/Movie/JoinMovies.h>
#include <TavaroMedia/Movie/MovieWriter.h>

#include <utility>
#include <vector>

namespace tavaro {

namespace {

constexpr int width = 1920, height = 1080, fps = 5;

void writeMinute(std::filesystem::path const& movie) {
    MovieWriter writer(movie, {.intent = MovieIntent::live, .width = width, .height = height, .fps = fps});
    Image image(width, height);
    for (int n = 0; n < 60 * fps; ++n) {
        drawScreenScene(image, n * 60 / fps);
        auto picture = writer.picture();
        fillPicture(picture, image.view());
        writer.append(std::move(picture), static_cast<double>(n) / fps);
    }
    writer.finish();
}

}

void writeHourMovie(std::filesystem::path const& movie) {
    auto minute = movie;
    minute.replace_filename("minute.mp4");
    writeMinute(minute);
    std::vector<MoviePart> parts;
    for (int i = 0; i < 60; ++i) parts.push_back({minute, i * 60.0});
    joinMovies(parts, movie);
    std::filesystem::remove(minute);
}

}
