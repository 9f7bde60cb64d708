#include <TavaroRender/Painter/Private/RecordedMatte.h>

#include <filesystem>

#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Frames/AlphaPicture.h>
#include <TavaroRender/Composition/Private/FrameState.h>
#include <TavaroRender/Painter/PaintError.h>
#include <TavaroRender/Painter/Private/RecordingFrames.h>

namespace tavaro {

RecordedMatte::RecordedMatte(ProjectPackage package, RecordingFrames& recordings)
    : package_(std::move(package))
    , recordings_(recordings) {}

std::string const& RecordedMatte::movieBeside(std::string_view camera) {
    if (camera_ == camera) return movie_;
    camera_ = camera;
    movie_.clear();
    shown_ = {}; // what it was made from counts no more, even if the movie found now shows the same pixels
    auto const stem = std::filesystem::path(camera).stem().string();
    for (auto const* ending : {".matte.mp4", ".matte.mov", ".matte.mkv", ".matte.webm"}) {
        std::error_code failure;
        if (!std::filesystem::is_regular_file(package_.assetURL(stem + ending), failure)) continue;
        movie_ = stem + ending;
        break;
    }
    return movie_;
}

void RecordedMatte::retry() {
    if (movie_.empty() && !latest_) camera_.reset();
}

std::shared_ptr<Image const> RecordedMatte::matte(ShownSource const& camera, VideoFrame const& picture) {
    auto const& movie = movieBeside(camera.asset);
    auto const frame = movie.empty() ? picture : recordings_.frame(movie, camera.time);
    if (!shown_.isEmpty() && !frame.isEmpty() && shown_.identity() == frame.identity()) return latest_;
    shown_ = frame;
    latest_.reset();
    if (movie.empty()) {
        if (auto alpha = alphaPicture(frame)) latest_ = std::make_shared<Image const>(std::move(*alpha));
        return latest_;
    }
    try {
        Image image;
        converter_.convert(frame, image);
        latest_ = std::make_shared<Image const>(std::move(image));
    } catch (MediaError const& error) {
        throw PaintError::unreadable(error.detail());
    }
    return latest_;
}

}
