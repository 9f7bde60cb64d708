#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <string_view>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroMedia/Frames/VideoFrame.h>
#include <TavaroMedia/Movie/MovieReader.h>

namespace tavaro {

/// Frames of a project's recordings by asset and time. Keeps the readers of the last few assets open, so clips that
/// take turns do not open their movies again. One thread at a time. Failures are `PaintError`: `missingAsset`,
/// `unreadable`, `noVideoTrack`.
class RecordingFrames {
public:
    explicit RecordingFrames(ProjectPackage package) : package_(std::move(package)) {}

    /// Keeps so many bytes of the pictures before the present one of each movie, so that going back by frames decodes
    /// none; of movies that are opened from here on.
    void keepEarlier(std::size_t bytes) { earlierBytes_ = bytes; }

    /// Opens the asset's movie, or fails as reading from it would.
    MovieInfo const& open(std::string_view asset);

    /// The frame on show at that many seconds of the asset; while its pixels stay the same, the same frame, so that a
    /// screen at rest is converted and drawn once.
    VideoFrame frame(std::string_view asset, double seconds);

private:
    struct Opened {
        std::string asset;
        MovieReader reader;
        VideoFrame latest;
    };
    Opened& opened(std::string_view asset);

    ProjectPackage package_;
    std::size_t earlierBytes_ = 0;
    std::list<Opened> opened_; // the latest used first
};

}
