#include <TavaroCapture/Recovery/Private/MetadataCheckpoints.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroPlatform/Clocks/MediaClock.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <fmt/format.h>
#include <spdlog/spdlog.h>

namespace tavaro {

namespace {

constexpr std::size_t sealedSamples = 1200; // 20 seconds of pointer samples: about 100 KB
constexpr std::uint64_t maxBytes = 256 << 20;

/// "metadata.json": how many sealed files come before it, and the rest of the log.
struct MetadataCheckpoint {
    std::int64_t sealedParts = 0;
    RecordingMetadata metadata;

    static constexpr auto fields = std::tuple{field("sealedParts", &MetadataCheckpoint::sealedParts),
                                              field("metadata", &MetadataCheckpoint::metadata)};
};
static_assert(listsEveryField<MetadataCheckpoint>);

std::filesystem::path sealedPath(std::filesystem::path const& directory, std::int64_t part) {
    return directory / fmt::format("metadata-{:03}.json", part);
}

}

struct MetadataCheckpoints::State {
    std::filesystem::path directory;
    TakeSnapshot take;
    EventCounts sealed; // in the sealed files
    std::int64_t sealedParts = 0;
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
        if (snapshot.log.cursorSamples.size() >= sealedSamples) seal(snapshot);
        writeFileAtomically(path(directory), encodeJSON(MetadataCheckpoint{sealedParts, std::move(snapshot.log)}));
    } catch (Error const& error) {
        spdlog::warn("The recording's log could not be saved: {}", error.what());
    }
}

/// The sealed file is written before the checkpoint that counts it, so a crash between the two loses and repeats
/// nothing.
void MetadataCheckpoints::State::seal(Snapshot& snapshot) {
    auto const front = takeFirstEvents(snapshot.log, snapshot.settled - sealed);
    writeFileAtomically(sealedPath(directory, sealedParts), encodeJSON(front));
    ++sealedParts;
    sealed = snapshot.settled;
}

std::filesystem::path MetadataCheckpoints::path(std::filesystem::path const& directory) {
    return directory / "metadata.json";
}

std::optional<RecordingMetadata> MetadataCheckpoints::read(std::filesystem::path const& directory) {
    try {
        auto const text = readWholeFile(path(directory), maxBytes);
        if (!text) return std::nullopt;
        auto checkpoint = decodeJSON<MetadataCheckpoint>(*text);
        RecordingMetadata whole;
        for (std::int64_t part = 0; part < checkpoint.sealedParts; ++part) {
            auto const sealedText = readWholeFile(sealedPath(directory, part), maxBytes);
            if (!sealedText) break; // the rest still tells what happened last
            auto const sealed = decodeJSON<RecordingMetadata>(*sealedText);
            appendEvents(whole, sealed);
        }
        RecordingMetadata const& last = checkpoint.metadata;
        appendEvents(whole, last);
        whole.captureSize = last.captureSize;
        whole.scaleFactor = last.scaleFactor;
        whole.health = last.health;
        return whole;
    } catch (Error const& error) {
        spdlog::warn("The log of an unfinished recording could not be read: {}", error.what());
        return std::nullopt;
    }
}

}
