#include <TavaroCapture/Recovery/Private/MetadataCheckpoints.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroPlatform/Clocks/MediaClock.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <fmt/format.h>
#include <spdlog/spdlog.h>
#include <utility>

namespace tavaro {

namespace {

constexpr std::size_t sealedEvents = 1200; // 20 seconds of pointer samples: about 100 KB
constexpr std::uint64_t maxBytes = 256 << 20;

/// "metadata.json": how many sealed files come before it, and the rest of the log.
struct MetadataCheckpoint {
    std::int64_t sealedParts = 0;
    RecordingMetadata metadata;

    static constexpr auto fields = std::tuple{field("sealedParts", &MetadataCheckpoint::sealedParts),
                                              field("metadata", &MetadataCheckpoint::metadata)};
};
static_assert(listsEveryField<MetadataCheckpoint>);

std::size_t total(EventCounts const& counts) {
    std::size_t result = 0;
    forEachEventList([&](std::size_t count) { result += count; }, counts);
    return result;
}

std::filesystem::path sealedPath(std::filesystem::path const& directory, std::int64_t part) {
    return directory / fmt::format("metadata-{:03}.json", part);
}

}

struct MetadataCheckpoints::State {
    std::filesystem::path directory;
    TakeSnapshot take;
    EventCounts sealed; // in the sealed files
    std::int64_t sealedParts = 0;
    bool hasFailed = false; // the last time
    std::atomic<std::uint64_t> sealedBytes = 0;
    std::atomic<std::uint64_t> restBytes = 0;
    SerialQueue queue{"com.tavaro.capture.checkpoint"};

    State(std::filesystem::path directory, TakeSnapshot take)
        : directory(std::move(directory))
        , take(std::move(take)) {}

    void write();
    void seal(Snapshot& snapshot);
};

MetadataCheckpoints::MetadataCheckpoints(std::filesystem::path directory, double interval, TakeSnapshot take)
    : state_(std::make_unique<State>(std::move(directory), std::move(take))) {
    state_->queue.startTimer(mediaClockNow() + interval, interval, [state = state_.get()](double) { state->write(); });
}

MetadataCheckpoints::~MetadataCheckpoints() { state_->queue.stopTimer(); }

void MetadataCheckpoints::writeNow() {
    state_->queue.sync([&] { state_->write(); });
}

void MetadataCheckpoints::State::write() {
    Snapshot snapshot = take(sealed);
    try {
        if (total(snapshot.settled - sealed) >= sealedEvents) seal(snapshot);
        auto const rest = encodeJSON(MetadataCheckpoint{sealedParts, std::move(snapshot.log)});
        writeFileAtomically(path(directory), rest);
        restBytes = rest.size();
        hasFailed = false;
    } catch (Error const& error) {
        if (std::exchange(hasFailed, true)) return;
        spdlog::warn("The recording's log could not be saved: {}", error.what());
    }
}

/// The sealed file is written before the checkpoint that counts it, so a crash between the two loses and repeats
/// nothing.
void MetadataCheckpoints::State::seal(Snapshot& snapshot) {
    auto const front = takeFirstEvents(snapshot.log, snapshot.settled - sealed);
    auto const text = encodeJSON(front);
    writeFileAtomically(sealedPath(directory, sealedParts), text);
    sealedBytes += text.size();
    ++sealedParts;
    sealed = snapshot.settled;
}

std::uint64_t MetadataCheckpoints::written() const { return state_->sealedBytes + state_->restBytes; }

std::filesystem::path MetadataCheckpoints::path(std::filesystem::path const& directory) {
    return directory / "metadata.json";
}

namespace {

/// What a file holds; none where it is missing or damaged.
template<class Record> std::optional<Record> readRecord(std::filesystem::path const& file) {
    try {
        auto const text = readWholeFile(file, maxBytes);
        return text ? std::optional(decodeJSON<Record>(*text)) : std::nullopt;
    } catch (Error const& error) {
        spdlog::warn("The log of an unfinished recording could not be read: {}", error.what());
        return std::nullopt;
    }
}

/// The numbers of the sealed files that there are, in order.
std::vector<std::int64_t> sealedOnDisk(std::filesystem::path const& directory) {
    std::vector<std::int64_t> result;
    std::error_code ignored;
    for (auto const& entry : std::filesystem::directory_iterator(directory, ignored)) {
        int part = 0;
        bool const isNumbered = std::sscanf(entry.path().filename().c_str(), "metadata-%d.json", &part) == 1;
        if (isNumbered && part >= 0 && entry.path() == sealedPath(directory, part)) result.push_back(part);
    }
    std::ranges::sort(result);
    return result;
}

}

/// Each file that is damaged or missing costs only what it held.
std::optional<MetadataCheckpoints::SavedLog> MetadataCheckpoints::read(std::filesystem::path const& directory) {
    auto const parts = sealedOnDisk(directory);
    std::error_code ignored;
    if (parts.empty() && !std::filesystem::exists(path(directory), ignored)) return std::nullopt;
    auto const checkpoint = readRecord<MetadataCheckpoint>(path(directory));
    SavedLog result{.isWhole = checkpoint.has_value()};
    std::int64_t counted = 0;
    for (auto const part : parts) {
        if (checkpoint && part >= checkpoint->sealedParts) continue; // the checkpoint holds it, too
        auto const sealed = readRecord<RecordingMetadata>(sealedPath(directory, part));
        if (sealed) appendEvents(result.log, *sealed);
        counted += sealed ? 1 : 0;
    }
    if (!checkpoint) return result;
    RecordingMetadata const& last = checkpoint->metadata;
    appendEvents(result.log, last);
    result.log.captureSize = last.captureSize;
    result.log.scaleFactor = last.scaleFactor;
    result.log.health = last.health;
    result.isWhole = counted == checkpoint->sealedParts;
    return result;
}

}
