#pragma once

#include <TavaroCapture/Segments/RecordingManifest.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <filesystem>
#include <functional>
#include <mutex>
#include <vector>

namespace tavaro {

/// The manifest of a take while it is recorded, shared by the writers of its streams, and the queue labelled
/// "com.tavaro.segments" on which they finish closed segments while the next ones already record. Any thread.
class TakeManifest {
public:
    TakeManifest(std::filesystem::path directory, UUID const& recordingID);

    std::filesystem::path const& directory() const { return directory_; }
    std::filesystem::path segmentPath(StreamRole role, std::int64_t index) const;
    RecordingManifest record() const;

    /// Enters a stream, or takes back what was entered for its role. Nothing is written yet.
    void enter(StreamRecord const& stream);
    void enter(StreamRole role, double offset);
    void add(StreamRole role, SegmentRecord segment);
    void complete();

    /// Of each stream, the segment that is open.
    struct OpenSegment {
        StreamRole role = StreamRole::screen;
        std::int64_t index = 0;
    };
    std::vector<OpenSegment> open() const;

    /// Writes what is entered now. Throws `FileError`.
    void write();
    /// The same, unless nearly all of it is written already: the manifest of a long take is large, and a segment that
    /// is not in it is found by its file.
    void writeIfDue();
    /// Runs steps after each other, in the order given. A step deals with its failures itself.
    void inBackground(std::function<void()> step) { queue_.async(std::move(step)); }
    /// Waits for the steps so far.
    void wait() {
        queue_.sync([] {});
    }

private:
    std::int64_t segments() const;

    std::filesystem::path const directory_;
    std::mutex writing_;
    std::int64_t written_ = 0; // segments; guarded by writing_
    std::mutex mutable lock_;
    RecordingManifest record_; // guarded by lock_
    SerialQueue queue_{"com.tavaro.segments"};
};

}
