#pragma once

#include <TavaroCore/Records/Fields.h>

#include <cstdint>
#include <string>
#include <vector>

namespace tavaro {

/// A picture of the film that was written: one frame, or a sheet of several.
struct DrawnPicture {
    std::string path;
    std::int64_t width = 0; // pixels
    std::int64_t height = 0;
    std::vector<double> times; // of the frames on it, seconds of the film

    static constexpr auto fields =
        std::tuple{field("path", &DrawnPicture::path), field("width", &DrawnPicture::width),
                   field("height", &DrawnPicture::height), field("times", &DrawnPicture::times)};
};
static_assert(listsEveryField<DrawnPicture>);

}
