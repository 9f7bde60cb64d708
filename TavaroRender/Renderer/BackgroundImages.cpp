#include <TavaroRender/Renderer/Private/BackgroundImages.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include <TavaroCore/Values/CanvasUnit.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Frames/PNG.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroRender/Kernels/ScreenTexture.h>
#include <TavaroRender/Renderer/Private/BoxBlur.h>

namespace tavaro {

namespace {

bool isPNG(std::filesystem::path const& file) {
    auto ending = file.extension().string();
    std::ranges::transform(ending, ending.begin(), [](unsigned char c) { return std::tolower(c); });
    return ending == ".png";
}

/// Other picture formats than PNG are movies of one frame.
Image readFrame(std::filesystem::path const& file) {
    Image image;
    try {
        FrameConverter().convert(MovieReader(file).frame(0), image);
    } catch (MediaError const& error) {
        std::error_code ignored;
        bool const isFile = std::filesystem::is_regular_file(file, ignored);
        bool const isOfBytes =
            error.kind() == MediaError::Kind::unreadable || error.kind() == MediaError::Kind::noVideoTrack;
        if (!isFile || !isOfBytes) throw;
        throw MediaError(MediaError::Kind::unreadable, error.what(), "it is damaged, or not a picture");
    }
    return image;
}

Image readPicture(std::filesystem::path const& file) { return isPNG(file) ? readPNG(file) : readFrame(file); }

Image copyOf(ImageView view) {
    Image image(view.width, view.height);
    for (int y = 0; y < view.height; ++y)
        std::memcpy(image.row(y), view.row(y), 4 * static_cast<std::size_t>(view.width));
    return image;
}

/// Image pixels a canvas pixel covers when the image fills the canvas.
double coverage(ImageView image, Size2 canvas) {
    return std::min(image.width / std::max(static_cast<double>(canvas.width), 1.0),
                    image.height / std::max(static_cast<double>(canvas.height), 1.0));
}

Image madeReady(Image const& picture, BackgroundStyle::ImageFile const& style, Size2 canvas) {
    ScreenTexture const levels(picture.view());
    int level = 0;
    while (level + 1 < levels.levelCount() && coverage(levels.ensureLevel(level), canvas) >= 2) ++level;
    auto image = copyOf(levels.ensureLevel(level));
    double const radius = std::max(style.blur, 0.0) * canvasUnit(canvas) * coverage(image.view(), canvas);
    // Three boxes of half the radius spread about as far as the radius says.
    boxBlur(image, static_cast<int>(std::lround(std::min(radius, 1e4) / 2)));
    return image;
}

}

ImageView BackgroundImages::ensure(BackgroundStyle::ImageFile const& style, Size2 canvas) {
    bool const isSame = madeFor_ == style && madeForCanvas_ == canvas;
    if (isSame && failure_) std::rethrow_exception(failure_);
    if (isSame && !image_.isEmpty()) return image_.view();
    image_ = {}; // also where the next steps throw
    failure_ = nullptr;
    madeFor_ = style;
    madeForCanvas_ = canvas;
    ++generation_;
    try {
        image_ = madeReady(readPicture(package_.assetURL(style.assetName)), style, canvas);
    } catch (MediaError const&) {
        failure_ = std::current_exception();
        throw;
    }
    return image_.view();
}

}
