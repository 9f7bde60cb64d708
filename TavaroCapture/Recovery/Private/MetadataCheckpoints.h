#pragma once

#include <TavaroCore/Recording/EventLists.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace tavaro {

/// Saves a take's log while it is recorded. The log of an hour is tens of megabytes, so what is older than 20 seconds
/// or so (where there is no pointer, two minutes) is sealed into numbered files ("metadata-000.json") that are never
/// written again, and each checkpoint
/// ("metadata.json") holds only the rest: its cost does not grow with the take.
class MetadataCheckpoints {
public:
    struct Snapshot {
        RecordingMetadata log; // after what was asked for, with the capture's size and health
        EventCounts settled;   // what of the whole log can no longer change
    };
    using TakeSnapshot = std::function<Snapshot(EventCounts const& after)>;

    /// Calls `take` every `interval` seconds on a queue labelled "com.tavaro.capture.checkpoint", and writes what it
    /// gives. A checkpoint that cannot be written is tried again the next time; the first of several in a row is
    /// logged.
    MetadataCheckpoints(std::filesystem::path directory, double interval, TakeSnapshot take);
    /// Ends the timer.
    ~MetadataCheckpoints();

    /// Writes a checkpoint now. Any thread but the checkpoint queue's and the log's.
    void writeNow();

    /// Bytes in its files. Any thread.
    std::uint64_t written() const;

    struct SavedLog {
        RecordingMetadata log; // up to the last checkpoint, as far as it can be read
        bool isWhole = true;   // nothing before the last checkpoint is missing
        bool operator==(SavedLog const&) const = default;
    };

    static std::filesystem::path path(std::filesystem::path const& directory);
    /// None where nothing was saved.
    static std::optional<SavedLog> read(std::filesystem::path const& directory);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
