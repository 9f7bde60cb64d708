#include <TavaroRender/Painter/Private/RecordingFrames.h>

#include <algorithm>

#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroRender/Painter/PaintError.h>

namespace tavaro {

namespace {

constexpr std::size_t mostOpen = 4; // a reader of 4K holds up to a hundred megabytes of frames

// A take's frames are stamped when they were captured, which is never quite on the beat: one that is due at 1/60 s may
// say 0.017 s.
constexpr double timeRounding = 0.001;

[[noreturn]] void throwReadError(MediaError const& error, std::string_view asset) {
    switch (error.kind()) {
    case MediaError::Kind::missing: throw PaintError::missingAsset(std::string(asset));
    case MediaError::Kind::noVideoTrack: throw PaintError::noVideoTrack();
    default: throw PaintError::unreadable(error.detail() + " (" + std::string(asset) + ")");
    }
}

}

RecordingFrames::Opened& RecordingFrames::opened(std::string_view asset) {
    auto const found = std::ranges::find(opened_, asset, &Opened::asset);
    if (found != opened_.end()) {
        opened_.splice(opened_.begin(), opened_, found);
        return *found;
    }
    opened_.push_front(
        {std::string(asset), MovieReader(package_.assetURL(asset), {.earlierBytes = earlierBytes_}), {}});
    if (opened_.size() > mostOpen) opened_.pop_back();
    return opened_.front();
}

MovieInfo const& RecordingFrames::open(std::string_view asset) {
    try {
        return opened(asset).reader.info();
    } catch (MediaError const& error) {
        throwReadError(error, asset);
    }
}

VideoFrame RecordingFrames::frame(std::string_view asset, double seconds) {
    try {
        auto& source = opened(asset);
        auto frame = source.reader.frame(seconds + timeRounding);
        // Parts of a recording may be movies of their own, so another one's frame may be the same picture.
        auto const same =
            std::ranges::find_if(opened_, [&](Opened const& other) { return frame.showsSamePixels(other.latest); });
        source.latest = same != opened_.end() ? same->latest : std::move(frame);
        return source.latest;
    } catch (MediaError const& error) {
        throwReadError(error, asset);
    }
}

}
