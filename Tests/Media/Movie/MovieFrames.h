#pragma once

#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Movie/MovieReader.h>

#include <filesystem>
#include <functional>

namespace tavaro {

/// Looks at each frame of a movie of at most 240 a second; `at` is when it is shown.
inline void eachFrame(std::filesystem::path const& movie, std::function<void(double at, ImageView)> const& look) {
    MovieReader reader(movie);
    FrameConverter converter;
    Image image;
    double last = -1;
    for (double at = 0; at < reader.info().duration; at += 1.0 / 240) {
        auto const frame = reader.frame(at);
        if (frame.presentationTime() <= last) continue;
        last = frame.presentationTime();
        converter.convert(frame, image);
        look(last, image.view());
    }
}

}
