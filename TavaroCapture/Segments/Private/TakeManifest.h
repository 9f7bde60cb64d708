#pragma once

#include <TavaroCapture/Segments/RecordingManifest.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <filesystem>
#include <functional>
#include <mutex>

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

    /// Writes what is entered now. Throws `FileError`.
    void write() const;
    /// Runs steps after each other, in the order given. A step deals with its failures itself.
    void inBackground(std::function<void()> step) { queue_.async(std::move(step)); }
    /// Waits for the steps so far.
    void wait() {
        queue_.sync([] {});
    }

private:
    std::filesystem::path const directory_;
    std::mutex mutable writing_;
    std::mutex mutable lock_;
    RecordingManifest record_; // guarded by lock_
    SerialQueue queue_{"com.tavaro.segments"};
};

}
