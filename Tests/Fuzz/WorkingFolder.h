#pragma once

#include <TavaroCapture/Recovery/RecoveryStore.h>
#include <TavaroCapture/Segments/Private/SegmentWriter.h>
#include <TavaroMedia/Frames/Image.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace tavaro {

/// A take of two short segments that nobody finished, in a folder of its own; one file of it is what the fuzzer makes.
class WorkingFolder {
public:
    WorkingFolder() {
        UUID const id = UUID::random();
        std::filesystem::create_directories(folder());
        RecoveryStore::markInProgress(folder(), id, "display");
        SegmentWriter writer({.manifest = std::make_shared<TakeManifest>(folder(), id),
                              .width = 16,
                              .height = 16,
                              .fps = 10,
                              .segmentDuration = 0.3});
        writer.prepare();
        Image const image(16, 16);
        for (int i = 0; i < 6; ++i) {
            auto picture = writer.picture();
            fillPicture(picture, image.view());
            writer.append(std::move(picture), i / 10.0);
        }
        writer.finish();
    }
    ~WorkingFolder() { std::filesystem::remove_all(recordings_); }

    std::filesystem::path folder() const { return recordings_ / "take"; }

    /// The take with those bytes as one of its files: whatever they say, what is on the disk comes back, in order, at
    /// times that make sense.
    void expectTake(std::filesystem::path const& file, std::string_view bytes) const {
        std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes; // at once: nobody waits for the disk
        auto const takes = RecoveryStore::findRecoverable(recordings_);
        if (takes.size() != 1) std::abort();
        auto const& take = takes[0];
        if (take.segments.size() != 2 || take.mediaFiles.size() != 2) std::abort();
        double end = 0;
        for (auto const& segment : take.segments) {
            bool const isInOrder = segment.start >= end - 0.01 && segment.duration > 0;
            if (!isInOrder || !std::isfinite(segment.start + segment.duration)) std::abort();
            end = segment.start + segment.duration;
        }
        if (take.directory() != folder() || !std::isfinite(take.estimatedDuration)) std::abort();
        for (auto const& stream : take.streams)
            if (!std::isfinite(stream.offset) || !stream.segments.empty()) std::abort();
    }

private:
    std::filesystem::path recordings_ = [] {
        auto pattern = (std::filesystem::temp_directory_path() / "tavaro-fuzz-XXXXXX").string();
        if (!mkdtemp(pattern.data())) std::abort();
        return std::filesystem::path(pattern);
    }();
};

}
