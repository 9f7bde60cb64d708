#include <TavaroCapture/Pulse/Private/RecordStream.h>

#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>

namespace tavaro::pulse {

namespace {

constexpr pa_sample_spec format{PA_SAMPLE_FLOAT32NE, audioRate, 2};
constexpr std::uint32_t fragmentBytes = audioRate / 50 * sizeof(StereoSample);
constexpr auto asIsUsual = static_cast<std::uint32_t>(-1);

// A stream whose rate is not known yet is looked at more often.
constexpr double learningSeconds = 1;
constexpr double usualAsking = 0.1;
constexpr double learningAsking = 0.02;
constexpr double usualArrivals = 0.25;
constexpr double learningArrivals = 0.06;

constexpr double longestSilenceOfDevice = 0.4; // without data, not without sound
// An output that nobody listens to may have rendered two seconds ahead: so long a stream may take to begin, and a new
// one would too, in place of one whose server was only too busy.
constexpr double longestWait = 3;

double seconds(pa_usec_t time) { return static_cast<double>(time) * 1e-6; }

}

RecordStream::RecordStream(Server& server, Options const& options, std::function<void(SoundBlock const&)> block)
    : timing_(options.timing)
    , openedAt_(mediaClockNow())
    , sound_([this, block = std::move(block)](SoundBlock const& made) {
        deliveredUntil_ = made.capturedAt + static_cast<double>(made.samples.size()) / audioRate;
        hasBegun_ = true;
        block(made);
    })
    , stream_(pa_stream_new(server.get(), options.title.c_str(), &format, nullptr)) {
    if (!stream_) return;
    pa_stream_set_read_callback(stream_.get(), onReadable, this);
    if (options.playback) pa_stream_set_monitor_stream(stream_.get(), *options.playback);
    pa_buffer_attr const buffers{asIsUsual, asIsUsual, asIsUsual, asIsUsual, fragmentBytes};
    auto const flags = static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_MOVE);
    pa_stream_connect_record(stream_.get(), options.source.c_str(), &buffers, flags);
}

RecordStream::~RecordStream() {
    if (stream_) pa_stream_set_read_callback(stream_.get(), nullptr, nullptr);
    if (asking_) pa_operation_cancel(asking_.get());
}

bool RecordStream::isLive() const {
    if (!stream_ || !PA_STREAM_IS_GOOD(pa_stream_get_state(stream_.get()))) return false;
    return quiet_ < longestWait;
}

bool RecordStream::isQuiet() const { return firstDataAt_ > 0 && quiet_ >= longestSilenceOfDevice; }

void RecordStream::tend() {
    double const now = mediaClockNow();
    noteQuiet(now);
    askForLatencies(now);
}

/// A thread that did not run for a while has not seen what came meanwhile.
void RecordStream::noteQuiet(double now) {
    constexpr double usualTurn = 0.05;
    bool const hasHeard = lastDataAt_ > lastTendedAt_;
    quiet_ = hasHeard ? 0 : quiet_ + std::min(now - std::max(lastTendedAt_, openedAt_), usualTurn);
    lastTendedAt_ = now;
}

void RecordStream::askForLatencies(double now) {
    if (timing_ == Timing::arrivals || !stream_ || pa_stream_get_state(stream_.get()) != PA_STREAM_READY) return;
    double const interval = now - openedAt_ < learningSeconds ? learningAsking : usualAsking;
    bool const isAsking = asking_ && pa_operation_get_state(asking_.get()) == PA_OPERATION_RUNNING;
    if (isAsking || now - lastAskedAt_ < interval) return;
    lastAskedAt_ = now;
    asking_.reset(pa_stream_update_timing_info(stream_.get(), onTiming, this));
}

void RecordStream::onTiming(pa_stream* stream, int success, void* self) {
    auto const* const info = pa_stream_get_timing_info(stream);
    bool const isGood = success && info && info->write_index > 0 && !info->write_index_corrupt;
    if (isGood) static_cast<RecordStream*>(self)->noteLatencies(*info);
}

/// The sample that the server is about to queue was captured that long ago; what an output plays will be heard later.
void RecordStream::noteLatencies(pa_timing_info const& info) {
    double const age = seconds(info.source_usec) + seconds(info.transport_usec) - seconds(info.sink_usec);
    sound_.noteTime(info.write_index / static_cast<std::int64_t>(sizeof(StereoSample)), mediaClockNow() - age);
}

void RecordStream::noteArrival(double now) {
    constexpr double backlog = 0.1; // what comes first was captured before, and comes too early for its number
    if (now - firstDataAt_ < backlog) return;
    auto const sample = sound_.samplesAdded();
    auto const lateness = [](std::int64_t number, double moment) {
        return moment - static_cast<double>(number) / audioRate;
    };
    if (arrivals_ && now >= arrivals_->until) {
        sound_.noteTime(arrivals_->sample, arrivals_->moment);
        arrivals_.reset();
    }
    double const length = now - openedAt_ < learningSeconds ? learningArrivals : usualArrivals;
    if (!arrivals_) arrivals_ = Arrivals{now + length, sample, now};
    if (lateness(sample, now) < lateness(arrivals_->sample, arrivals_->moment)) {
        arrivals_->sample = sample;
        arrivals_->moment = now;
    }
}

void RecordStream::read() {
    void const* data = nullptr;
    std::size_t bytes = 0;
    while (pa_stream_readable_size(stream_.get()) > 0 && pa_stream_peek(stream_.get(), &data, &bytes) >= 0 && bytes) {
        lastDataAt_ = mediaClockNow();
        if (firstDataAt_ == 0) firstDataAt_ = lastDataAt_;
        auto const count = bytes / sizeof(StereoSample);
        if (data)
            sound_.append({static_cast<StereoSample const*>(data), count});
        else
            sound_.appendHole(count);
        if (timing_ == Timing::arrivals) noteArrival(lastDataAt_);
        pa_stream_drop(stream_.get());
    }
}

}
