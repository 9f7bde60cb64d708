#include "TestCameraNode.h"

#include "Camera/Timecode.h"

#include <TavaroCapture/PipeWire/Private/VideoStream.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <spa/param/buffers.h>
#include <spa/param/param.h>
#include <spa/param/video/format-utils.h>

namespace tavaro {

using namespace std::chrono_literals;
using namespace pipewire;

namespace {

constexpr double fps = 30;

/// The camera's side of a stream.
class Sender {
public:
    Sender(Connection& connection, TestCameraNode& camera, TestCameraNode::Options const& options)
        : camera_(camera)
        , stream_(pw_stream_new(connection.core(), options.name.c_str(),
                                pw_properties_new(PW_KEY_MEDIA_CLASS, "Video/Source", PW_KEY_MEDIA_ROLE, "Camera",
                                                  PW_KEY_NODE_NAME, options.name.c_str(), PW_KEY_NODE_DESCRIPTION,
                                                  options.description.c_str(), nullptr))) {
        static pw_stream_events const events{.version = PW_VERSION_STREAM_EVENTS,
                                             .state_changed = onState,
                                             .param_changed = onParameter,
                                             .process = onProcess};
        pw_stream_add_listener(stream_.get(), &hook_, &events, this);
        std::array<std::uint8_t, 1024> room{};
        auto builder = SPA_POD_BUILDER_INIT(room.data(), room.size());
        spa_rectangle const size{static_cast<std::uint32_t>(options.width), static_cast<std::uint32_t>(options.height)};
        spa_rectangle const other{320, 240};
        spa_fraction const rate{30, 1};
        std::array<spa_pod const*, 2> forms{};
        for (std::size_t i = 0; i < forms.size(); ++i) // the better one last
            forms[i] = static_cast<spa_pod const*>(spa_pod_builder_add_object(
                &builder, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat, SPA_FORMAT_mediaType,
                SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype, SPA_POD_Id(SPA_MEDIA_SUBTYPE_raw),
                SPA_FORMAT_VIDEO_format, SPA_POD_Id(SPA_VIDEO_FORMAT_YUY2), SPA_FORMAT_VIDEO_size,
                SPA_POD_Rectangle(i == 0 ? &other : &size), SPA_FORMAT_VIDEO_framerate, SPA_POD_Fraction(&rate)));
        auto const flags = static_cast<pw_stream_flags>(PW_STREAM_FLAG_DRIVER | PW_STREAM_FLAG_MAP_BUFFERS);
        pw_stream_connect(stream_.get(), PW_DIRECTION_OUTPUT, PW_ID_ANY, flags, forms.data(), forms.size());
    }
    ~Sender() { spa_hook_remove(&hook_); }

    void tick() {
        if (isStreaming_ && !camera_.isFrozen) pw_stream_trigger_process(stream_.get());
    }

private:
    static void onState(void* self, pw_stream_state, pw_stream_state now, char const*) {
        static_cast<Sender*>(self)->isStreaming_ = now == PW_STREAM_STATE_STREAMING;
    }
    static void onParameter(void* self, std::uint32_t id, spa_pod const* parameter) {
        auto& here = *static_cast<Sender*>(self);
        spa_video_info_raw given{};
        if (id != SPA_PARAM_Format || !parameter || spa_format_video_raw_parse(parameter, &given) < 0) return;
        here.width_ = static_cast<int>(given.size.width);
        here.height_ = static_cast<int>(given.size.height);
        std::array<std::uint8_t, 1024> room{};
        auto builder = SPA_POD_BUILDER_INIT(room.data(), room.size());
        int const stride = 2 * here.width_;
        std::array<spa_pod const*, 2> wanted{
            static_cast<spa_pod const*>(spa_pod_builder_add_object(
                &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
                SPA_POD_CHOICE_RANGE_Int(8, 2, 16), SPA_PARAM_BUFFERS_blocks, SPA_POD_Int(1), SPA_PARAM_BUFFERS_size,
                SPA_POD_Int(stride * here.height_), SPA_PARAM_BUFFERS_stride, SPA_POD_Int(stride))),
            static_cast<spa_pod const*>(spa_pod_builder_add_object(
                &builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type, SPA_POD_Id(SPA_META_Header),
                SPA_PARAM_META_size, SPA_POD_Int(static_cast<int>(sizeof(spa_meta_header)))))};
        pw_stream_update_params(here.stream_.get(), wanted.data(), wanted.size());
    }
    static void onProcess(void* self) { static_cast<Sender*>(self)->send(); }

    void send() {
        auto* const buffer = pw_stream_dequeue_buffer(stream_.get());
        if (!buffer) return;
        auto& data = buffer->buffer->datas[0];
        auto const bytes = static_cast<std::size_t>(2 * width_ * height_);
        auto const microseconds = std::llround(mediaClockNow() * 1e6);
        double const lit = static_cast<double>(microseconds) * 1e-6 - camera_.flashAt;
        std::uint8_t const grey = lit >= 0 && lit < 0.3 ? 200 : 100;
        paintTimecode({static_cast<std::uint8_t*>(data.data), bytes}, width_, microseconds, grey);
        auto* const header = static_cast<spa_meta_header*>(
            spa_buffer_find_meta_data(buffer->buffer, SPA_META_Header, sizeof(spa_meta_header)));
        if (header)
            *header = {.flags = 0, .offset = 0, .pts = microseconds * 1000, .dts_offset = 0, .seq = sequence_++};
        data.chunk->offset = 0;
        data.chunk->stride = camera_.saysNoStride ? 0 : 2 * width_;
        data.chunk->size = static_cast<std::uint32_t>(bytes);
        pw_stream_queue_buffer(stream_.get(), buffer);
        camera_.note(static_cast<double>(microseconds) * 1e-6);
    }

    TestCameraNode& camera_;
    int width_ = 0;
    int height_ = 0;
    bool isStreaming_ = false;
    std::uint64_t sequence_ = 0;
    spa_hook hook_{};
    Stream stream_;
};

}

void paintTimecode(std::span<std::uint8_t> pixels, int width, std::int64_t microseconds, std::uint8_t grey) {
    constexpr std::uint8_t noColor = 128, black = 16, white = 235;
    for (std::size_t i = 0; i + 1 < pixels.size(); i += 2) pixels[i] = grey, pixels[i + 1] = noColor;
    int const columns = std::min(width, timecode::squaresInARow * timecode::side);
    for (int y = 0; y < timecode::squares / timecode::squaresInARow * timecode::side; ++y)
        for (int x = 0; x < columns; ++x)
            pixels[static_cast<std::size_t>(2 * (y * width + x))] =
                timecode::isWhite(microseconds, timecode::squareAt(x, y)) ? white : black;
}

std::vector<double> TestCameraNode::moments() const {
    std::lock_guard const guard(lock_);
    return moments_;
}

void TestCameraNode::note(double moment) {
    std::lock_guard const guard(lock_);
    moments_.push_back(moment);
    ++sent;
}

TestCameraNode::TestCameraNode(Options options) : options_(std::move(options)), thread_([this] { film(); }) {}

TestCameraNode::~TestCameraNode() {
    isEnding_ = true;
    thread_.join();
}

/// Until the end, or that of the server.
void TestCameraNode::film() {
    Connection connection;
    if (!connection.settle(1s)) return;
    Sender sender(connection, *this, options_);
    double next = mediaClockNow();
    while (!isEnding_ && connection.isAlive()) {
        connection.run(1ms);
        if (mediaClockNow() < next) continue;
        sender.tick();
        next += 1 / fps;
    }
}

}
