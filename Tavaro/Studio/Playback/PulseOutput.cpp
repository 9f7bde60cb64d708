#include <Tavaro/Studio/Playback/PulseOutput.h>

#include <algorithm>
#include <pulse/pulseaudio.h>
#include <thread>
#include <utility>

namespace tavaro {

namespace {

constexpr pa_sample_spec format{PA_SAMPLE_FLOAT32NE, audioRate, 2};
// Enough for a thread that comes late; what an edit changes is heard after it.
constexpr auto aheadBytes = static_cast<std::uint32_t>(audioRate / 4 * sizeof(StereoSample));
constexpr auto firstBytes = static_cast<std::uint32_t>(audioRate / 25 * sizeof(StereoSample));
constexpr auto asIsUsual = static_cast<std::uint32_t>(-1);

template<auto release> struct Release {
    void operator()(auto* handle) const { release(handle); }
};
template<auto part, auto release> struct PartAndRelease {
    void operator()(auto* handle) const {
        part(handle);
        release(handle);
    }
};
using Loop = std::unique_ptr<pa_mainloop, Release<pa_mainloop_free>>;
using Context = std::unique_ptr<pa_context, PartAndRelease<pa_context_disconnect, pa_context_unref>>;
using Stream = std::unique_ptr<pa_stream, PartAndRelease<pa_stream_disconnect, pa_stream_unref>>;

}

struct PulseOutput::Connection {
    explicit Connection(std::string const& server)
        : loop(pa_mainloop_new())
        , context(pa_context_new(pa_mainloop_get_api(loop.get()), "Tavaro")) {
        pa_context_connect(context.get(), server.empty() ? nullptr : server.c_str(), PA_CONTEXT_NOAUTOSPAWN, nullptr);
    }

    bool isAlive() const { return PA_CONTEXT_IS_GOOD(pa_context_get_state(context.get())); }
    bool isReady() const { return pa_context_get_state(context.get()) == PA_CONTEXT_READY; }
    void beginStream();

    Loop const loop;
    Context const context;
    Stream stream;
    bool isStreamWanted = false;
    std::int64_t written = 0; // samples
};

void PulseOutput::Connection::beginStream() {
    stream.reset(pa_stream_new(context.get(), "Preview", &format, nullptr));
    written = 0;
    if (!stream) return;
    pa_buffer_attr const buffers{asIsUsual, aheadBytes, firstBytes, asIsUsual, asIsUsual};
    auto const flags = static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_INTERPOLATE_TIMING |
                                                      PA_STREAM_AUTO_TIMING_UPDATE);
    pa_stream_connect_playback(stream.get(), nullptr, &buffers, flags, nullptr, nullptr);
}

PulseOutput::PulseOutput(std::string server) : server_(std::move(server)) {}
PulseOutput::~PulseOutput() = default;

void PulseOutput::open() {
    if (!connection_ || !connection_->isAlive()) {
        connection_.reset(); // the old one's end first
        connection_ = std::make_unique<Connection>(server_);
    }
    connection_->stream.reset();
    connection_->isStreamWanted = true;
    if (connection_->isReady()) connection_->beginStream();
}

void PulseOutput::close() {
    if (!connection_) return;
    connection_->isStreamWanted = false;
    connection_->stream.reset();
    run(std::chrono::milliseconds(0)); // the server hears of it
}

SoundOutput::State PulseOutput::state() const {
    if (!connection_ || !connection_->isStreamWanted || !connection_->isAlive()) return State::gone;
    if (!connection_->stream) return connection_->isReady() ? State::gone : State::opening;
    switch (pa_stream_get_state(connection_->stream.get())) {
    case PA_STREAM_READY: return State::ready;
    case PA_STREAM_CREATING: return State::opening;
    default: return State::gone;
    }
}

std::string PulseOutput::reason() const {
    if (connection_ && connection_->isAlive()) return "the sound device is gone";
    auto const detail = connection_ ? pa_strerror(pa_context_errno(connection_->context.get())) : "not asked";
    return std::string("there is no sound server (") + detail + ")";
}

void PulseOutput::run(std::chrono::milliseconds atMost) {
    if (!connection_ || !connection_->isAlive()) return std::this_thread::sleep_for(atMost);
    auto* const loop = connection_->loop.get();
    auto const wait = static_cast<int>(std::chrono::microseconds(atMost).count());
    if (pa_mainloop_prepare(loop, wait) >= 0 && pa_mainloop_poll(loop) >= 0) pa_mainloop_dispatch(loop);
    bool const begins = connection_->isStreamWanted && !connection_->stream && connection_->isReady();
    if (begins) connection_->beginStream();
}

std::size_t PulseOutput::room() const {
    if (state() != State::ready) return 0;
    auto const bytes = pa_stream_writable_size(connection_->stream.get());
    return bytes == static_cast<std::size_t>(-1) ? 0 : bytes / sizeof(StereoSample);
}

void PulseOutput::write(std::span<StereoSample const> samples) {
    if (state() != State::ready) return;
    auto* const stream = connection_->stream.get();
    if (pa_stream_write(stream, samples.data(), samples.size_bytes(), nullptr, 0, PA_SEEK_RELATIVE) == 0)
        connection_->written += std::ssize(samples);
}

std::optional<double> PulseOutput::heard() const {
    if (state() != State::ready || connection_->written == 0) return std::nullopt;
    pa_usec_t time = 0;
    if (pa_stream_get_time(connection_->stream.get(), &time) != 0 || time == 0) return std::nullopt;
    double const sample = static_cast<double>(time) * 1e-6 * audioRate;
    return std::min(sample, static_cast<double>(connection_->written));
}

}
