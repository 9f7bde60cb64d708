#include "TestScreenNode.h"

#include "TestDisplay.h"

#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <spa/param/video/format-utils.h>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace tavaro {

using namespace std::chrono_literals;

TestScreenNode::TestScreenNode(int width, int height, int silentBeginnings, Memory memory)
    : silentBeginnings_(silentBeginnings)
    , memory_(memory)
    , width_(width)
    , height_(height) {
    thread_ = std::thread([this] { run(); });
    if (!eventually([this] { return id_ != PW_ID_ANY; })) throw std::runtime_error("the screen's node did not start");
}

TestScreenNode::~TestScreenNode() {
    isEnding_ = true;
    thread_.join();
}

double TestScreenNode::show(std::uint8_t grey) {
    double const moment = mediaClockNow();
    add({.grey = grey, .moment = moment});
    return moment;
}

void TestScreenNode::begin() {
    constexpr double untilRepaint = 0.016;
    showsAgainAt_ = mediaClockNow() + untilRepaint;
    if (silentBeginnings_-- <= 0) return;
    showsAgainAt_ = 0;
    std::lock_guard const guard(lock_);
    if (!orders_.empty()) shown_ = orders_.back();
    orders_.clear();
}

/// To whoever began to look.
void TestScreenNode::showAgain() {
    if (showsAgainAt_ == 0 || mediaClockNow() < showsAgainAt_) return;
    showsAgainAt_ = 0;
    std::lock_guard const guard(lock_);
    if (orders_.empty() && shown_) orders_.push_back(*shown_);
}

void TestScreenNode::movePointer(PixelPoint point) {
    {
        std::lock_guard const guard(lock_);
        pointer_ = point;
    }
    add({.moment = mediaClockNow()});
}

void TestScreenNode::hidePointer() {
    {
        std::lock_guard const guard(lock_);
        pointer_.reset();
    }
    add({.moment = mediaClockNow()});
}

void TestScreenNode::resize(int width, int height) {
    std::lock_guard const guard(lock_);
    newSize_ = {width, height};
}

void TestScreenNode::crop(PixelRect part) {
    std::lock_guard const guard(lock_);
    part_ = part;
}

void TestScreenNode::add(Order order) {
    std::lock_guard const guard(lock_);
    orders_.push_back(order);
}

void TestScreenNode::run() {
    connect();
    while (!isEnding_ && connection_.isAlive()) {
        connection_.run(2ms);
        if (stream_ && id_ == PW_ID_ANY) id_ = pw_stream_get_node_id(stream_.get());
        showAgain();
        std::optional<std::pair<int, int>> size;
        bool hasOrders = false;
        {
            std::lock_guard const guard(lock_);
            size = std::exchange(newSize_, std::nullopt);
            hasOrders = !orders_.empty();
        }
        if (isPausing_.exchange(false)) pw_stream_set_active(stream_.get(), false);
        if (size) {
            std::tie(width_, height_) = *size;
            offerSize();
        }
        if (hasOrders && isStreaming_) pw_stream_trigger_process(stream_.get());
    }
    stream_.reset();
}

namespace {

struct Spare {
    Spare() { spa_pod_builder_init(&builder, bytes.data(), static_cast<std::uint32_t>(bytes.size())); }

    std::array<std::uint8_t, 2048> bytes{};
    spa_pod_builder builder{};
};

enum class Modifier { none, linear };

spa_pod const* formatOf(spa_pod_builder& builder, int width, int height, Modifier modifier) {
    spa_rectangle const size{static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
    constexpr spa_fraction variable{0, 1}, slowest{1, 1}, fastest{60, 1};
    spa_pod_frame object{};
    spa_pod_builder_push_object(&builder, &object, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype,
                        SPA_POD_Id(SPA_MEDIA_SUBTYPE_raw), SPA_FORMAT_VIDEO_format, SPA_POD_Id(SPA_VIDEO_FORMAT_BGRx),
                        SPA_FORMAT_VIDEO_size, SPA_POD_Rectangle(&size), SPA_FORMAT_VIDEO_framerate,
                        SPA_POD_Fraction(&variable), SPA_FORMAT_VIDEO_maxFramerate,
                        SPA_POD_CHOICE_RANGE_Fraction(&fastest, &slowest, &fastest), 0);
    if (modifier == Modifier::linear) {
        spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_modifier, SPA_POD_PROP_FLAG_MANDATORY);
        spa_pod_builder_long(&builder, 0);
    }
    return static_cast<spa_pod const*>(spa_pod_builder_pop(&builder, &object));
}

}

std::vector<spa_pod const*> TestScreenNode::formats(spa_pod_builder& builder) const {
    std::vector<spa_pod const*> result;
    if (memory_ != Memory::plain) result.push_back(formatOf(builder, width_, height_, Modifier::linear));
    if (memory_ == Memory::plain || memory_ == Memory::both)
        result.push_back(formatOf(builder, width_, height_, Modifier::none));
    return result;
}

void TestScreenNode::connect() {
    static constexpr pw_stream_events events{.version = PW_VERSION_STREAM_EVENTS,
                                             .state_changed = onState,
                                             .param_changed = onParameter,
                                             .add_buffer = onAddBuffer,
                                             .remove_buffer = onRemoveBuffer,
                                             .process = onProcess};
    if (!connection_.isAlive()) return;
    stream_.reset(
        pw_stream_new(connection_.core(), "screen",
                      pw_properties_new(PW_KEY_MEDIA_CLASS, "Video/Source", PW_KEY_NODE_NAME, "test-screen", nullptr)));
    pw_stream_add_listener(stream_.get(), &hook_, &events, this);
    Spare spare;
    auto offered = formats(spare.builder);
    auto const memory = memory_ == Memory::plain ? PW_STREAM_FLAG_MAP_BUFFERS : PW_STREAM_FLAG_ALLOC_BUFFERS;
    pw_stream_connect(stream_.get(), PW_DIRECTION_OUTPUT, PW_ID_ANY,
                      static_cast<pw_stream_flags>(PW_STREAM_FLAG_DRIVER | memory), offered.data(),
                      static_cast<std::uint32_t>(offered.size()));
}

void TestScreenNode::onState(void* self, pw_stream_state /*old*/, pw_stream_state state, char const* /*error*/) {
    auto& here = *static_cast<TestScreenNode*>(self);
    here.isStreaming_ = state == PW_STREAM_STATE_STREAMING;
    if (here.isStreaming_) here.begin();
}

void TestScreenNode::onParameter(void* self, std::uint32_t id, spa_pod const* parameter) {
    auto& here = *static_cast<TestScreenNode*>(self);
    if (id != SPA_PARAM_Format || !parameter) return;
    here.isGraphics_ = spa_pod_find_prop(parameter, nullptr, SPA_FORMAT_VIDEO_modifier) != nullptr;
    here.offerBuffers();
}

void TestScreenNode::offerSize() {
    Spare spare;
    auto offered = formats(spare.builder);
    pw_stream_update_params(stream_.get(), offered.data(), static_cast<std::uint32_t>(offered.size()));
}

void TestScreenNode::offerBuffers() {
    Spare spare;
    auto* const builder = &spare.builder;
    auto const pod = [](void* made) { return static_cast<spa_pod const*>(made); };
    std::array<spa_pod const*, 4> const wanted{
        pod(spa_pod_builder_add_object(
            builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
            SPA_POD_CHOICE_RANGE_Int(4, 2, 16), SPA_PARAM_BUFFERS_blocks, SPA_POD_Int(1), SPA_PARAM_BUFFERS_size,
            SPA_POD_Int(width_ * 4 * height_), SPA_PARAM_BUFFERS_stride, SPA_POD_Int(width_ * 4),
            SPA_PARAM_BUFFERS_dataType,
            SPA_POD_CHOICE_FLAGS_Int(isGraphics_ ? 1 << SPA_DATA_DmaBuf : 1 << SPA_DATA_MemFd))),
        pod(spa_pod_builder_add_object(builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type,
                                       SPA_POD_Id(SPA_META_Header), SPA_PARAM_META_size,
                                       SPA_POD_Int(sizeof(spa_meta_header)))),
        pod(spa_pod_builder_add_object(builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type,
                                       SPA_POD_Id(SPA_META_VideoCrop), SPA_PARAM_META_size,
                                       SPA_POD_Int(sizeof(spa_meta_region)))),
        pod(spa_pod_builder_add_object(builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type,
                                       SPA_POD_Id(SPA_META_Cursor), SPA_PARAM_META_size,
                                       SPA_POD_Int(sizeof(spa_meta_cursor) + sizeof(spa_meta_bitmap) + 64)))};
    pw_stream_update_params(stream_.get(), const_cast<spa_pod const**>(wanted.data()), wanted.size());
}

/// A file stands for a graphics card's memory; one that was opened to be written only, for such as nobody can read.
void TestScreenNode::onAddBuffer(void* self, pw_buffer* buffer) {
    auto& here = *static_cast<TestScreenNode*>(self);
    if (here.memory_ == Memory::plain) return;
    auto& data = buffer->buffer->datas[0];
    FileDescriptor file(memfd_create("graphics", MFD_CLOEXEC));
    auto const bytes = static_cast<std::uint32_t>(here.width_ * 4 * here.height_);
    if (ftruncate(file.get(), bytes) != 0) return;
    data.type = here.isGraphics_ ? SPA_DATA_DmaBuf : SPA_DATA_MemFd;
    data.flags = SPA_DATA_FLAG_READWRITE;
    data.maxsize = bytes;
    data.mapoffset = 0;
    data.fd = file.get();
    if (here.isGraphics_ && here.memory_ != Memory::graphics) {
        auto const name = "/proc/self/fd/" + std::to_string(file.get());
        data.fd = (here.shared_[buffer] = FileDescriptor(open(name.c_str(), O_WRONLY | O_CLOEXEC))).get();
    }
    here.files_[buffer] = std::move(file);
}

void TestScreenNode::onRemoveBuffer(void* self, pw_buffer* buffer) {
    auto& here = *static_cast<TestScreenNode*>(self);
    here.files_.erase(buffer);
    here.shared_.erase(buffer);
}

void TestScreenNode::onProcess(void* self) { static_cast<TestScreenNode*>(self)->send(); }

void TestScreenNode::send() {
    auto* const buffer = pw_stream_dequeue_buffer(stream_.get());
    if (!buffer) return;
    auto& data = buffer->buffer->datas[0];
    Order order;
    PixelRect part;
    std::optional<PixelPoint> pointer;
    {
        std::lock_guard const guard(lock_);
        part = part_;
        pointer = pointer_;
        if (!orders_.empty()) {
            order = orders_.front();
            orders_.erase(orders_.begin());
            if (order.grey) shown_ = order;
        }
    }
    auto const stride = static_cast<std::size_t>(width_) * 4;
    auto const bytes = stride * static_cast<std::size_t>(height_);
    bool const isPlain = memory_ == Memory::plain;
    bool const fits = (data.data || !isPlain) && data.maxsize >= bytes;
    data.chunk->offset = 0;
    data.chunk->stride = static_cast<std::int32_t>(stride);
    // Some desktops say of graphics memory nothing but that there is a picture.
    data.chunk->size = order.grey && fits ? (isGraphics_ ? 1U : static_cast<std::uint32_t>(bytes)) : 0;
    data.chunk->flags = 0;
    if (data.chunk->size > 0) {
        std::vector<std::uint8_t> picture(bytes, *order.grey);
        std::fill_n(picture.begin(), 4, std::uint8_t{255});
        std::fill_n(picture.end() - 4, 4, std::uint8_t{255});
        if (isPlain)
            std::ranges::copy(picture, static_cast<std::uint8_t*>(data.data));
        else if (pwrite(files_[buffer].get(), picture.data(), bytes, 0) < 0)
            data.chunk->size = 0;
    }
    if (auto* const header = static_cast<spa_meta_header*>(
            spa_buffer_find_meta_data(buffer->buffer, SPA_META_Header, sizeof(spa_meta_header))))
        *header = {.flags = 0, .offset = 0, .pts = static_cast<std::int64_t>(order.moment * 1e9)};
    if (auto* const crop = static_cast<spa_meta_region*>(
            spa_buffer_find_meta_data(buffer->buffer, SPA_META_VideoCrop, sizeof(spa_meta_region)))) {
        crop->region = {{part.x, part.y},
                        {static_cast<std::uint32_t>(part.width), static_cast<std::uint32_t>(part.height)}};
    }
    if (auto* const cursor = static_cast<spa_meta_cursor*>(
            spa_buffer_find_meta_data(buffer->buffer, SPA_META_Cursor, sizeof(spa_meta_cursor)))) {
        *cursor = {};
        if (pointer) *cursor = {.id = 1, .position = {pointer->x, pointer->y}};
    }
    pw_stream_queue_buffer(stream_.get(), buffer);
}
}
