#include <TavaroCapture/Segments/Private/DarkScreen.h>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroMedia/Movie/MovieWriter.h>

#include <algorithm>
#include <cstring>

namespace tavaro {

namespace {

constexpr Size2 usualSize{1280, 720};

Image dark(int width, int height) {
    Image image(width, height);
    for (int y = 0; y < height; ++y) std::memset(image.row(y), 0, std::size_t{4} * static_cast<std::size_t>(width));
    return image;
}

}

/// A picture a second is enough to go to any of its moments soon.
JoinedMovie writeDarkScreen(std::filesystem::path const& file, Size2 size, double seconds) {
    if (size.width < 2 || size.height < 2) size = usualSize;
    MovieWriter writer(file, {.container = MovieContainer::mov,
                              .width = static_cast<int>(size.width),
                              .height = static_cast<int>(size.height),
                              .fps = 1,
                              .bitrate = 100'000});
    auto const image = dark(writer.width(), writer.height());
    for (double at = 0; at == 0 || at < seconds; ++at) {
        auto picture = writer.picture();
        fillPicture(picture, image.view());
        writer.append(std::move(picture), at);
    }
    writer.finish(seconds);
    return {.duration = seconds, .frameCount = writer.framesAppended()};
}

}
