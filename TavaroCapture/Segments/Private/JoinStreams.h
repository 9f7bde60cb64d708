#pragma once

#include <TavaroCapture/Segments/RecordingManifest.h>
#include <TavaroCapture/Segments/TakeStream.h>
#include <TavaroCore/Recording/CaptureHealth.h>
#include <TavaroMedia/Movie/JoinMovies.h>

#include <filesystem>
#include <string>
#include <vector>

namespace tavaro {

/// Joins the screen's segments into one movie of the working folder. Throws `MediaError`.
JoinedMovie joinScreen(std::filesystem::path const& directory, std::vector<SegmentRecord> const& segments);

/// What was recorded beside the screen.
struct JoinedStreams {
    std::vector<TakeStream> streams;
    std::vector<std::string> warnings; // sentences: what of them could not be had

    bool has(StreamRole role) const;
};

/// Joins each of the streams into one file of the working folder. One that is lost or damaged costs only itself.
/// Throws `MediaError` where nothing can be written.
JoinedStreams joinStreams(std::filesystem::path const& directory, std::vector<StreamRecord> const& streams);

/// Says of a camera and a microphone that were on whether they recorded anything.
void noteLostStreams(CaptureHealth& health, std::vector<StreamRecord> const& wanted, JoinedStreams const& joined);

}
