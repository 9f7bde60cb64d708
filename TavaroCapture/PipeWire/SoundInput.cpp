#include <TavaroCapture/PipeWire/Private/SoundInput.h>

#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <spa/param/audio/format-utils.h>
#include <utility>

namespace tavaro::pipewire {

namespace {

// A stream whose rate is not known yet is looked at more often.
constexpr double learningSeconds = 1;
constexpr double usualNoting = 0.1;
constexpr double learningNoting = 0.02;

constexpr double longestSilenceOfDevice = 0.4; // without data, not without sound
constexpr double longestStart = 3;

pw_properties* propertiesOf(SoundInput::Options const& options) {
    auto* const properties =
        pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Capture", PW_KEY_MEDIA_ROLE, "Production",
                          PW_KEY_NODE_LATENCY, "960/48000", PW_KEY_TARGET_OBJECT, options.node.c_str(),
                          PW_KEY_NODE_NAME, options.title.c_str(), nullptr);
    if (options.kind == SoundInput::Kind::output) pw_properties_set(properties, PW_KEY_STREAM_CAPTURE_SINK, "true");
    return properties;
}

void append(std::vector<StereoSample>& samples, spa_data const& data) {
    if (!data.data || !data.chunk) return;
    auto const offset = std::min(data.chunk->offset, data.maxsize);
    auto const count = std::min(data.chunk->size, data.maxsize - offset) / sizeof(StereoSample);
    auto const before = samples.size();
    samples.resize(before + count);
    std::memcpy(samples.data() + before, static_cast<std::uint8_t const*>(data.data) + offset,
                count * sizeof(StereoSample));
}

}

SoundInput::SoundInput(Connection& connection, Options const& options, std::function<void(SoundBlock const&)> block)
    : connection_(connection)
    , openedAt_(mediaClockNow())
    , sound_([this, block = std::move(block)](SoundBlock const& made) {
        deliveredUntil_ = made.capturedAt + static_cast<double>(made.samples.size()) / audioRate;
        block(made);
    })
    , stream_(connection.isAlive() ? pw_stream_new(connection.core(), options.title.c_str(), propertiesOf(options))
                                   : nullptr) {
    if (stream_) connect();
}

SoundInput::~SoundInput() {
    if (!stream_) return;
    pw_stream_disconnect(stream_.get()); // after it no cycle runs
    spa_hook_remove(&hook_);
}

void SoundInput::connect() {
    static constexpr pw_stream_events events{
        .version = PW_VERSION_STREAM_EVENTS, .state_changed = onState, .process = onProcess};
    pw_stream_add_listener(stream_.get(), &hook_, &events, this);
    std::array<std::uint8_t, 1024> bytes{};
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_F32;
    format.rate = audioRate;
    format.channels = 2;
    format.position[0] = SPA_AUDIO_CHANNEL_FL;
    format.position[1] = SPA_AUDIO_CHANNEL_FR;
    spa_pod const* wanted = spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
    auto const flags = static_cast<pw_stream_flags>(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS |
                                                    PW_STREAM_FLAG_DONT_RECONNECT | PW_STREAM_FLAG_RT_PROCESS);
    pw_stream_connect(stream_.get(), PW_DIRECTION_INPUT, PW_ID_ANY, flags, &wanted, 1);
}

void SoundInput::onState(void* self, pw_stream_state /*old*/, pw_stream_state state, char const* /*error*/) {
    static_cast<SoundInput*>(self)->state_ = state;
}

/// On the server's thread, at its cycle: only there is the cycle's time that of the samples. After a cycle that was
/// missed there are several buffers, of which the last ends at that time.
void SoundInput::onProcess(void* self) {
    auto& here = *static_cast<SoundInput*>(self);
    std::vector<StereoSample> samples;
    while (auto* const buffer = pw_stream_dequeue_buffer(here.stream_.get())) {
        if (buffer->buffer->n_datas > 0) append(samples, buffer->buffer->datas[0]);
        pw_stream_queue_buffer(here.stream_.get(), buffer);
    }
    if (!samples.empty()) here.take(std::move(samples));
}

/// What a cycle hands over was captured before it began.
void SoundInput::take(std::vector<StereoSample> samples) {
    pw_time time{};
    pw_stream_get_time_n(stream_.get(), &time, sizeof time);
    if (time.now <= 0 || time.rate.denom == 0) return;
    double const delay = static_cast<double>(time.delay) * time.rate.num / time.rate.denom;
    auto const count = samples.size();
    Cycle cycle{.samples = std::move(samples),
                .moment = static_cast<double>(time.now) * 1e-9 - delay -
                          static_cast<double>(count + time.buffered) / audioRate,
                .lost = lostBefore(time, count)};
    std::lock_guard const guard(lock_);
    cycles_.push_back(std::move(cycle));
}

/// By the server's count of samples, which goes on where we get none.
std::size_t SoundInput::lostBefore(pw_time const& time, std::size_t count) {
    double const until = static_cast<double>(time.ticks) * time.rate.num / time.rate.denom * audioRate;
    double const from = until - static_cast<double>(count);
    double const lost = ticksUntil_ < 0 ? 0 : from - ticksUntil_;
    ticksUntil_ = until;
    constexpr double leastLoss = 48, mostLoss = 10.0 * audioRate; // a count that was set anew is no loss
    return lost >= leastLoss && lost <= mostLoss ? static_cast<std::size_t>(std::lround(lost)) : 0;
}

void SoundInput::tend() {
    std::vector<Cycle> cycles;
    {
        std::lock_guard const guard(lock_);
        cycles.swap(cycles_);
    }
    if (cycles.empty()) return;
    double const now = mediaClockNow();
    lastDataAt_ = now;
    if (firstDataAt_ == 0) firstDataAt_ = now;
    double const interval = now - firstDataAt_ < learningSeconds ? learningNoting : usualNoting;
    for (auto const& cycle : cycles) {
        if (cycle.lost > 0) sound_.appendHole(cycle.lost);
        if (cycle.moment - lastNotedAt_ >= interval || cycle.lost > 0) {
            sound_.noteTime(sound_.samplesAdded(), cycle.moment);
            lastNotedAt_ = cycle.moment;
        }
        sound_.append(cycle.samples);
    }
}

bool SoundInput::isLive() const {
    if (!stream_ || !connection_.isAlive()) return false;
    if (state_ == PW_STREAM_STATE_ERROR || state_ == PW_STREAM_STATE_UNCONNECTED) return false;
    double const now = mediaClockNow();
    return firstDataAt_ > 0 ? now - lastDataAt_ < longestSilenceOfDevice : now - openedAt_ < longestStart;
}

}
