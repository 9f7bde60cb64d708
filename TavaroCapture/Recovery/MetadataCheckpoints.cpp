#include <TavaroCapture/Recovery/Private/MetadataCheckpoints.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroPlatform/Clocks/MediaClock.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <fmt/format.h>
#include <iterator>
#include <spdlog/spdlog.h>

namespace tavaro {

namespace {

constexpr std::size_t sealedSamples = 3600; // a minute of pointer samples: about 300 KB
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

template<class Events> Events cutOff(Events& events, std::size_t count) {
    auto const end = events.begin() + static_cast<std::ptrdiff_t>(std::min(count, events.size()));
    Events front(std::make_move_iterator(events.begin()), std::make_move_iterator(end));
    events.erase(events.begin(), end);
    return front;
}

template<class Events> void append(Events& to, Events const& more) { to.insert(to.end(), more.begin(), more.end()); }

/// Moves the records before `count` out of the log.
RecordingMetadata cutOff(RecordingMetadata& log, EventLog::Mark const& count) {
    RecordingMetadata front;
    front.cursorSamples = cutOff(log.cursorSamples, count.cursorSamples);
    front.clicks = cutOff(log.clicks, count.clicks);
    front.keystrokes = cutOff(log.keystrokes, count.keystrokes);
    front.appSpans = cutOff(log.appSpans, count.appSpans);
    return front;
}

}

struct MetadataCheckpoints::State {
    std::filesystem::path directory;
    TakeSnapshot take;
    EventLog::Mark sealed; // in the sealed files
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
    EventLog::Mark const& to = snapshot.settled;
    RecordingMetadata const front =
        cutOff(snapshot.log, {to.cursorSamples - sealed.cursorSamples, to.clicks - sealed.clicks,
                              to.keystrokes - sealed.keystrokes, to.appSpans - sealed.appSpans});
    writeFileAtomically(sealedPath(directory, sealedParts), encodeJSON(front));
    ++sealedParts;
    sealed = to;
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
            append(whole.cursorSamples, sealed.cursorSamples);
            append(whole.clicks, sealed.clicks);
            append(whole.keystrokes, sealed.keystrokes);
            append(whole.appSpans, sealed.appSpans);
        }
        RecordingMetadata& last = checkpoint.metadata;
        append(whole.cursorSamples, last.cursorSamples);
        append(whole.clicks, last.clicks);
        append(whole.keystrokes, last.keystrokes);
        append(whole.appSpans, last.appSpans);
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
