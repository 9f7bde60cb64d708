#include "TestClicksNode.h"

#include "TestDisplay.h"

#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <array>
#include <pthread.h>
#include <spa/param/audio/format-utils.h>
#include <span>
#include <utility>

namespace tavaro {

TestClicksNode::TestClicksNode(Options options) : options_(std::move(options)), thread_([this] { run(); }) {}

TestClicksNode::~TestClicksNode() {
    isEnding_ = true;
    thread_.join();
}

pw_properties* TestClicksNode::properties() const {
    if (isMicrophone())
        return pw_properties_new(PW_KEY_MEDIA_CLASS, "Audio/Source", PW_KEY_NODE_NAME, microphone,
                                 PW_KEY_NODE_DESCRIPTION, "Desk", nullptr);
    return pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Playback", PW_KEY_TARGET_OBJECT,
                             options_.output.c_str(), PW_KEY_NODE_NAME, "test-player", nullptr);
}

void TestClicksNode::run() {
    static constexpr pw_stream_events events{.version = PW_VERSION_STREAM_EVENTS, .process = onProcess};
    if (!connection_.isAlive()) return;
    stream_.reset(pw_stream_new(connection_.core(), "clicks", properties()));
    pw_stream_add_listener(stream_.get(), &hook_, &events, this);
    std::array<std::uint8_t, 1024> bytes{};
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_F32;
    format.rate = audioRate;
    format.channels = 2;
    spa_pod const* offered = spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
    auto const flags = PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS |
                       (isMicrophone() ? PW_STREAM_FLAG_NONE : PW_STREAM_FLAG_AUTOCONNECT);
    pw_stream_connect(stream_.get(), PW_DIRECTION_OUTPUT, PW_ID_ANY, static_cast<pw_stream_flags>(flags), &offered, 1);
    while (!isEnding_ && connection_.isAlive()) connection_.run(std::chrono::milliseconds(20));
    pw_stream_disconnect(stream_.get());
    stream_.reset();
}

namespace {

/// Before everything else, as a device's is. Refused where the user may not ask; then it has its turn when it has it.
void prefer(pthread_t thread) {
    sched_param const least{.sched_priority = sched_get_priority_min(SCHED_RR)};
    pthread_setschedparam(thread, SCHED_RR, &least);
}

}

void TestClicksNode::noteLateTurn(double moment) {
    std::lock_guard const guard(turnsLock_);
    lateTurns_.push_back(moment);
}

void TestClicksNode::speak() {
    if (!std::exchange(isPreferred_, true)) prefer(pthread_self());
    constexpr auto between = static_cast<std::int64_t>(apart * audioRate);
    constexpr std::int64_t click = audioRate / 1000;
    auto* const buffer = pw_stream_dequeue_buffer(stream_.get());
    if (!buffer) return;
    pw_time time{};
    pw_stream_get_time_n(stream_.get(), &time, sizeof time);
    auto& data = buffer->buffer->datas[0];
    auto const count =
        std::min<std::uint64_t>(buffer->requested ? buffer->requested : 1024, data.maxsize / sizeof(StereoSample));
    std::span const samples(static_cast<StereoSample*>(data.data), count);
    bool const isLost = lost_ > 0 && lost_-- > 0;
    double const length = static_cast<double>(count) / audioRate;
    double const begun = static_cast<double>(time.now) * 1e-9 - (isMicrophone() ? length : 0);
    if (mediaClockNow() > static_cast<double>(time.now) * 1e-9 + length / 4) noteLateTurn(begun);
    for (auto& sample : samples) {
        auto const place = frame_ % between - between / 2;
        bool const isClick = !isLost && place >= 0 && place < click;
        sample = isClick ? options_.click : StereoSample{};
        if (isClick && place == 0) note(begun + static_cast<double>(&sample - samples.data()) / audioRate);
        ++frame_;
    }
    data.chunk->offset = 0;
    data.chunk->stride = sizeof(StereoSample);
    data.chunk->size = isLost ? 0 : static_cast<std::uint32_t>(count * sizeof(StereoSample));
    pw_stream_queue_buffer(stream_.get(), buffer);
}

}
