#include <TavaroCapture/PipeWire/Private/VideoStream.h>

#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <fmt/format.h>
#include <spa/param/video/format-utils.h>
#include <utility>

namespace tavaro::pipewire {

namespace {

constexpr double longestPause = 1; // seconds
constexpr double longestRestart = 0.2;
// A stamp this far off is of another clock.
constexpr double farthestStamp = 10;

// Of memory whose rows lie one after the other, among the ways in which graphics cards arrange them (DRM's numbers).
constexpr std::int64_t linear = 0;

struct LayoutName {
    DeviceLayout layout;
    spa_video_format format;
    char const* name;
};
constexpr std::array<LayoutName, 8> layoutNames{{{DeviceLayout::bgrx, SPA_VIDEO_FORMAT_BGRx, "BGRx"},
                                                 {DeviceLayout::bgrx, SPA_VIDEO_FORMAT_BGRA, "BGRA"},
                                                 {DeviceLayout::rgbx, SPA_VIDEO_FORMAT_RGBx, "RGBx"},
                                                 {DeviceLayout::rgbx, SPA_VIDEO_FORMAT_RGBA, "RGBA"},
                                                 {DeviceLayout::yuyv, SPA_VIDEO_FORMAT_YUY2, "YUY2"},
                                                 {DeviceLayout::uyvy, SPA_VIDEO_FORMAT_UYVY, "UYVY"},
                                                 {DeviceLayout::nv12, SPA_VIDEO_FORMAT_NV12, "NV12"},
                                                 {DeviceLayout::yuv420, SPA_VIDEO_FORMAT_I420, "I420"}}};

struct Spare {
    Spare() { spa_pod_builder_init(&builder, bytes.data(), static_cast<std::uint32_t>(bytes.size())); }

    std::array<std::uint8_t, 4096> bytes{};
    spa_pod_builder builder{};
};

void addFormats(spa_pod_builder& builder, std::vector<DeviceLayout> const& layouts) {
    spa_pod_frame choice{};
    spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_format, 0);
    spa_pod_builder_push_choice(&builder, &choice, SPA_CHOICE_Enum, 0);
    bool isFirst = true;
    for (auto const layout : layouts) {
        for (auto const& name : layoutNames) {
            if (name.layout != layout) continue;
            if (std::exchange(isFirst, false)) spa_pod_builder_id(&builder, name.format); // the default comes first
            spa_pod_builder_id(&builder, name.format);
        }
    }
    spa_pod_builder_pop(&builder, &choice);
}

/// Who has no memory of that kind must not agree on it; which of several arrangements it is, who has the memory
/// decides.
void addModifier(spa_pod_builder& builder) {
    spa_pod_frame choice{};
    spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_modifier,
                         SPA_POD_PROP_FLAG_MANDATORY | SPA_POD_PROP_FLAG_DONT_FIXATE);
    spa_pod_builder_push_choice(&builder, &choice, SPA_CHOICE_Enum, 0);
    for (int i = 0; i < 2; ++i) spa_pod_builder_long(&builder, linear); // the default comes first
    spa_pod_builder_pop(&builder, &choice);
}

enum class Rate { limited, free };
enum class Memory { plain, graphics };
struct Offer {
    spa_media_subtype subtype = SPA_MEDIA_SUBTYPE_raw;
    Rate rate = Rate::free;
    Memory memory = Memory::plain;
};

/// What we take of one kind. A screen honours only the greatest rate of the range.
spa_pod const* add(spa_pod_builder& builder, VideoStream::Options const& options, Offer const& offer) {
    spa_rectangle const usual{static_cast<std::uint32_t>(options.width), static_cast<std::uint32_t>(options.height)};
    constexpr spa_rectangle smallest{1, 1}, largest{16'384, 16'384};
    spa_fraction const most{static_cast<std::uint32_t>(options.fps), 1};
    constexpr spa_fraction variable{0, 1}, slowest{1, 1}, fastest{240, 1};
    spa_pod_frame object{};
    spa_pod_builder_push_object(&builder, &object, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype,
                        SPA_POD_Id(offer.subtype), 0);
    if (offer.subtype == SPA_MEDIA_SUBTYPE_raw) addFormats(builder, options.layouts);
    if (offer.memory == Memory::graphics) addModifier(builder);
    if (options.size == VideoStream::Options::Size::exact)
        spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_size, SPA_POD_Rectangle(&usual), 0);
    else
        spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_size,
                            SPA_POD_CHOICE_RANGE_Rectangle(&usual, &smallest, &largest), 0);
    spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_framerate, SPA_POD_CHOICE_RANGE_Fraction(&most, &variable, &fastest),
                        0);
    if (offer.rate == Rate::limited)
        spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_maxFramerate,
                            SPA_POD_CHOICE_RANGE_Fraction(&most, &slowest, &most), 0);
    return static_cast<spa_pod const*>(spa_pod_builder_pop(&builder, &object));
}

std::vector<spa_pod const*> offers(spa_pod_builder& builder, VideoStream::Options const& options,
                                   std::span<Memory const> memories) {
    std::vector<spa_pod const*> result;
    auto const isRaw = [](DeviceLayout layout) { return layout != DeviceLayout::jpeg; };
    if (std::ranges::any_of(options.layouts, isRaw)) {
        for (auto const memory : memories)
            for (auto const rate : {Rate::limited, Rate::free})
                result.push_back(add(builder, options, {.rate = rate, .memory = memory}));
    }
    if (!std::ranges::all_of(options.layouts, isRaw))
        result.push_back(add(builder, options, {.subtype = SPA_MEDIA_SUBTYPE_mjpg}));
    return result;
}

/// What the pictures of a graphics card's memory are, for a sentence; empty for those of plain memory.
std::string graphicsName(spa_pod const& format) {
    if (!spa_pod_find_prop(&format, nullptr, SPA_FORMAT_VIDEO_modifier)) return {};
    spa_video_info_raw info{};
    spa_format_video_raw_parse(&format, &info);
    auto const named = std::ranges::find(layoutNames, info.format, &LayoutName::format);
    return fmt::format("format {}, modifier {:#x}", named == layoutNames.end() ? "unknown" : named->name,
                       info.modifier);
}

double rateOf(spa_fraction rate, spa_fraction most) {
    auto const& known = rate.num > 0 ? rate : most;
    return known.denom > 0 ? static_cast<double>(known.num) / known.denom : 0;
}

DeviceFormat rawFormat(spa_video_info_raw const& info, DeviceLayout layout) {
    return {.layout = layout,
            .width = static_cast<int>(info.size.width),
            .height = static_cast<int>(info.size.height),
            .matrix = info.color_matrix == SPA_VIDEO_COLOR_MATRIX_BT709 ? DeviceMatrix::bt709 : DeviceMatrix::bt601,
            .range = info.color_range == SPA_VIDEO_COLOR_RANGE_0_255 ? DeviceRange::full : DeviceRange::limited};
}

/// None for a format that we did not offer.
std::optional<VideoFormat> formatOf(spa_pod const& pod) {
    std::uint32_t type = 0, subtype = 0;
    if (spa_format_parse(&pod, &type, &subtype) < 0) return std::nullopt;
    if (subtype == SPA_MEDIA_SUBTYPE_mjpg) {
        spa_video_info_mjpg info{};
        if (spa_format_video_mjpg_parse(&pod, &info) < 0) return std::nullopt;
        return VideoFormat{{.layout = DeviceLayout::jpeg,
                            .width = static_cast<int>(info.size.width),
                            .height = static_cast<int>(info.size.height)},
                           rateOf(info.framerate, info.max_framerate)};
    }
    spa_video_info_raw info{};
    if (spa_format_video_raw_parse(&pod, &info) < 0) return std::nullopt;
    auto const named = std::ranges::find(layoutNames, info.format, &LayoutName::format);
    if (named == layoutNames.end()) return std::nullopt;
    return VideoFormat{rawFormat(info, named->layout), rateOf(info.framerate, info.max_framerate)};
}

pw_properties* propertiesOf(VideoStream::Options const& options) {
    bool const isScreen = options.role == VideoStream::Options::Role::screen;
    return pw_properties_new(PW_KEY_MEDIA_TYPE, "Video", PW_KEY_MEDIA_CATEGORY, "Capture", PW_KEY_MEDIA_ROLE,
                             isScreen ? "Screen" : "Camera", nullptr);
}

template<class Meta> Meta* metaOf(spa_buffer& buffer, std::uint32_t type) {
    return static_cast<Meta*>(spa_buffer_find_meta_data(&buffer, type, sizeof(Meta)));
}

/// Some desktops share a window in pictures as large as the screen, and say where in them it is.
std::optional<PixelRect> partOf(spa_buffer& buffer, DeviceFormat const& format) {
    auto const* const crop = metaOf<spa_meta_region>(buffer, SPA_META_VideoCrop);
    if (!crop || !spa_meta_region_is_valid(crop)) return std::nullopt;
    auto const& [position, size] = crop->region;
    constexpr std::uint32_t largest = 1 << 20;
    PixelRect const said{position.x, position.y, static_cast<int>(std::min(size.width, largest)),
                         static_cast<int>(std::min(size.height, largest))};
    if (position.x < 0 || position.y < 0 || position.x > format.width || position.y > format.height)
        return std::nullopt;
    auto const part = said.intersection({0, 0, format.width, format.height});
    return part.isEmpty() ? std::nullopt : std::optional(part);
}

}

VideoStream::VideoStream(Connection& connection, Options options, Handlers handlers)
    : connection_(connection)
    , options_(std::move(options))
    , handlers_(std::move(handlers))
    , stream_(connection.isAlive() ? pw_stream_new(connection.core(), "Tavaro", propertiesOf(options_)) : nullptr) {
    if (!stream_) return;
    listen();
    connect();
}

VideoStream::~VideoStream() {
    if (stream_) spa_hook_remove(&hook_);
}

void VideoStream::listen() {
    static constexpr pw_stream_events events{.version = PW_VERSION_STREAM_EVENTS,
                                             .state_changed = onState,
                                             .param_changed = onParameter,
                                             .remove_buffer = onRemoveBuffer,
                                             .process = onProcess};
    pw_stream_add_listener(stream_.get(), &hook_, &events, this);
}

void VideoStream::connect() {
    Spare spare;
    constexpr std::array<Memory, 2> memories{Memory::plain, Memory::graphics};
    bool const takesGraphics = options_.role == Options::Role::screen && refusedAt_ == 0;
    auto formats = offers(spare.builder, options_, std::span(memories).first(takesGraphics ? 2 : 1));
    auto const flags = static_cast<pw_stream_flags>(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS |
                                                    PW_STREAM_FLAG_DONT_RECONNECT);
    pw_stream_connect(stream_.get(), PW_DIRECTION_INPUT, options_.node, flags, formats.data(),
                      static_cast<std::uint32_t>(formats.size()));
}

bool VideoStream::isLive() const {
    if (!stream_ || !connection_.isAlive()) return false;
    if (state_ == PW_STREAM_STATE_ERROR || state_ == PW_STREAM_STATE_UNCONNECTED) return false;
    if (refusedAt_ > 0 && mediaClockNow() - refusedAt_ > longestPause) return false;
    return pausedAt_ == 0 || mediaClockNow() - pausedAt_ < longestPause;
}

void VideoStream::restart() {
    if (!stream_) return;
    if (refusedAt_ > 0) {
        pw_stream_disconnect(stream_.get());
        return connect();
    }
    double const end = mediaClockNow() + longestRestart;
    pw_stream_set_active(stream_.get(), false);
    // Both ends must have seen the pause, or nothing begins anew.
    while (state_ == PW_STREAM_STATE_STREAMING && mediaClockNow() < end) connection_.run(std::chrono::milliseconds(10));
    connection_.settle(std::chrono::milliseconds(100));
    pw_stream_set_active(stream_.get(), true);
    pausedAt_ = 0;
}

std::string VideoStream::state() const {
    if (!connection_.isAlive()) return fmt::format("the connection ended: {}", connection_.reason());
    if (!error_.empty()) return fmt::format("its stream failed: {}", error_);
    auto const agreed = format_ ? fmt::format("{} × {} pixels", format_->pictures.width, format_->pictures.height)
                                : std::string("no format agreed");
    return fmt::format("its stream is {}, {}", pw_stream_state_as_string(state_), agreed);
}

void VideoStream::onState(void* self, pw_stream_state /*old*/, pw_stream_state state, char const* error) {
    static_cast<VideoStream*>(self)->noteState(state, error);
}

void VideoStream::noteState(pw_stream_state state, char const* error) {
    bool const hasStreamed = state_ == PW_STREAM_STATE_STREAMING || pausedAt_ > 0;
    if (state == PW_STREAM_STATE_STREAMING) pausedAt_ = 0;
    if (state == PW_STREAM_STATE_PAUSED && hasStreamed && pausedAt_ == 0) pausedAt_ = mediaClockNow();
    state_ = state;
    if (error && refusedAt_ == 0) error_ = error;
}

void VideoStream::onParameter(void* self, std::uint32_t id, spa_pod const* parameter) {
    if (id == SPA_PARAM_Format && parameter) static_cast<VideoStream*>(self)->agree(*parameter);
}

void VideoStream::agree(spa_pod const& format) {
    auto const agreed = formatOf(format);
    if (!agreed) return;
    agreedName_ = graphicsName(format);
    if (agreedName_.empty() && std::exchange(refusedAt_, 0) > 0) error_.clear(); // there is another
    askForBuffers();
    if (std::exchange(format_, agreed) != agreed) handlers_.format(*agreed);
}

void VideoStream::askForBuffers() {
    constexpr int headerBytes = sizeof(spa_meta_header);
    constexpr int pointerBytes = sizeof(spa_meta_cursor) + sizeof(spa_meta_bitmap);
    constexpr int usualPicture = 64 * 64 * 4, largestPicture = 1024 * 1024 * 4;
    constexpr int plainMemory = 1 << SPA_DATA_MemFd | 1 << SPA_DATA_MemPtr, graphicsMemory = 1 << SPA_DATA_DmaBuf;
    Spare spare;
    auto* const builder = &spare.builder;
    std::vector<spa_pod const*> wanted;
    auto const add = [&](void* pod) { wanted.push_back(static_cast<spa_pod const*>(pod)); };
    add(spa_pod_builder_add_object(builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
                                   SPA_POD_CHOICE_RANGE_Int(8, 2, 16), SPA_PARAM_BUFFERS_dataType,
                                   SPA_POD_CHOICE_FLAGS_Int(agreedName_.empty() ? plainMemory : graphicsMemory)));
    add(spa_pod_builder_add_object(builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type,
                                   SPA_POD_Id(SPA_META_Header), SPA_PARAM_META_size, SPA_POD_Int(headerBytes)));
    if (options_.role == Options::Role::screen) {
        add(spa_pod_builder_add_object(builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type,
                                       SPA_POD_Id(SPA_META_VideoCrop), SPA_PARAM_META_size,
                                       SPA_POD_Int(static_cast<int>(sizeof(spa_meta_region)))));
        add(spa_pod_builder_add_object(
            builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type, SPA_POD_Id(SPA_META_Cursor),
            SPA_PARAM_META_size,
            SPA_POD_CHOICE_RANGE_Int(pointerBytes + usualPicture, pointerBytes, pointerBytes + largestPicture)));
    }
    pw_stream_update_params(stream_.get(), wanted.data(), static_cast<std::uint32_t>(wanted.size()));
}

void VideoStream::onProcess(void* self) {
    auto& here = *static_cast<VideoStream*>(self);
    while (auto* const buffer = pw_stream_dequeue_buffer(here.stream_.get())) {
        if (here.options_.role == Options::Role::screen) here.takePointer(*buffer->buffer);
        here.takeBuffer(*buffer);
        pw_stream_queue_buffer(here.stream_.get(), buffer);
    }
}

void VideoStream::onRemoveBuffer(void* self, pw_buffer* buffer) {
    static_cast<VideoStream*>(self)->memories_.erase(buffer);
}

/// By the picture's own stamp, else by that of the cycle in which it came.
double VideoStream::momentOf(spa_buffer& buffer) const {
    double const now = mediaClockNow();
    auto const isLikely = [now](double moment) { return std::abs(now - moment) < farthestStamp; };
    if (auto const* const header = metaOf<spa_meta_header>(buffer, SPA_META_Header)) {
        double const moment = static_cast<double>(header->pts) * 1e-9;
        if (isLikely(moment)) return moment;
    }
    pw_time time{};
    pw_stream_get_time_n(stream_.get(), &time, sizeof time);
    double const cycle = static_cast<double>(time.now) * 1e-9;
    return isLikely(cycle) ? cycle : now;
}

/// Some that carry only a pointer have no picture, or say that it is none.
void VideoStream::takeBuffer(pw_buffer& buffer) {
    if (!format_ || buffer.buffer->n_datas == 0) return;
    auto const& data = buffer.buffer->datas[0];
    if (!data.chunk || data.chunk->size == 0) return;
    if (data.type == SPA_DATA_DmaBuf) return takeGraphics(buffer);
    if (!data.data) return;
    auto const offset = std::min(data.chunk->offset, data.maxsize);
    takePicture(*buffer.buffer,
                {static_cast<std::uint8_t const*>(data.data) + offset,
                 std::min<std::size_t>(data.chunk->size, data.maxsize - offset)},
                true);
}

/// Of such memory nobody says how much of it the picture takes.
void VideoStream::takeGraphics(pw_buffer& buffer) {
    auto const& data = buffer.buffer->datas[0];
    auto& memory = memories_[&buffer];
    if (!memory && refusedAt_ == 0) memory = GraphicsMemory::map(static_cast<int>(data.fd), data.mapoffset);
    if (!memory) return refuseGraphics(systemReason(errno));
    GraphicsMemory::Reading const reading(*memory);
    auto const bytes = memory->bytes();
    takePicture(*buffer.buffer, bytes.subspan(std::min<std::size_t>(data.chunk->offset, bytes.size())),
                reading.isWhole());
}

void VideoStream::refuseGraphics(std::string const& reason) {
    if (refusedAt_ > 0) return;
    refusedAt_ = mediaClockNow();
    error_ =
        fmt::format("its pictures are in a graphics card's memory, which cannot be read ({}): {}", agreedName_, reason);
}

void VideoStream::takePicture(spa_buffer& buffer, std::span<std::uint8_t const> bytes, bool isWhole) const {
    auto const& data = buffer.datas[0];
    auto const* const header = metaOf<spa_meta_header>(buffer, SPA_META_Header);
    VideoPicture picture{.format = format_->pictures,
                         .bytes = bytes,
                         .capturedAt = momentOf(buffer),
                         .isDamaged = !isWhole || (data.chunk->flags & SPA_CHUNK_FLAG_CORRUPTED) != 0 ||
                                      (header && (header->flags & SPA_META_HEADER_FLAG_CORRUPTED) != 0)};
    picture.format.stride = data.chunk->stride;
    if (header) picture.sequence = header->seq;
    picture.part = partOf(buffer, picture.format);
    handlers_.picture(picture);
}

/// A buffer without a place for it leaves it where it is; one without an id says that it is not to be seen.
void VideoStream::takePointer(spa_buffer& buffer) const {
    auto const* const cursor = metaOf<spa_meta_cursor>(buffer, SPA_META_Cursor);
    if (!cursor) return;
    if (spa_meta_cursor_is_valid(cursor))
        handlers_.pointer(PixelPoint{cursor->position.x, cursor->position.y});
    else
        handlers_.pointer(std::nullopt);
}
}
