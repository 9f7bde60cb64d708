#include <TavaroCapture/Wayland/Private/SharedScreen.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/Wayland/Private/RestoreTokens.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fmt/format.h>

namespace tavaro::wayland {

namespace {

using namespace std::chrono_literals;

constexpr auto turn = 20ms;
constexpr auto longestStart = 2s;
constexpr double patience = 0.5;  // seconds after which a picture that does not come is asked for again
constexpr double stillness = 0.1; // after which it is taken for one of a screen on which nothing changes

void copyRow(std::uint8_t* to, std::uint8_t const* from, int pixels, DeviceLayout layout) {
    std::memcpy(to, from, static_cast<std::size_t>(pixels) * 4);
    if (layout != DeviceLayout::rgbx) return;
    for (int x = 0; x < pixels; ++x) std::swap(to[4 * x], to[4 * x + 2]);
}

/// The part `frame` of a picture that may be smaller by now; what is beyond it is black.
void copyPart(Image& to, pipewire::VideoPicture const& from, PixelRect const& frame) {
    auto const part = frame.intersection({0, 0, from.format.width, from.format.height});
    auto const stride = from.format.stride > 0 ? from.format.stride : std::ptrdiff_t{4} * from.format.width;
    for (int y = 0; y < to.height(); ++y) {
        bool const isThere = y < part.height;
        int const width = isThere ? std::min(part.width, to.width()) : 0;
        auto const* const row = from.bytes.data() + stride * (frame.y + y) + std::ptrdiff_t{4} * frame.x;
        if (isThere) copyRow(to.row(y), row, width, from.format.layout);
        std::memset(to.row(y) + std::ptrdiff_t{4} * width, 0, static_cast<std::size_t>(to.width() - width) * 4);
    }
}

bool isWhole(pipewire::VideoPicture const& picture) {
    auto const& format = picture.format;
    auto const row = std::size_t{4} * static_cast<std::size_t>(format.width);
    auto const stride = format.stride > 0 ? static_cast<std::size_t>(format.stride) : row;
    if (picture.isDamaged || format.stride < 0 || stride < row || format.height <= 0) return false;
    return picture.bytes.size() >= stride * static_cast<std::size_t>(format.height - 1) + row;
}

/// The part of a whole picture that shows something.
pipewire::VideoPicture shownPart(pipewire::VideoPicture const& whole) {
    if (!whole.part) return whole;
    auto result = whole;
    auto& format = result.format;
    if (format.stride == 0) format.stride = std::ptrdiff_t{4} * format.width;
    format.width = whole.part->width;
    format.height = whole.part->height;
    auto const begin = format.stride * whole.part->y + std::ptrdiff_t{4} * whole.part->x;
    result.bytes = whole.bytes.subspan(static_cast<std::size_t>(begin));
    return result;
}

std::string_view nameOf(ShareKind kind) { return kind == ShareKind::monitor ? "whole screen" : "window"; }

PixelRect evenFrame(PixelRect frame) {
    frame.width -= frame.width % 2;
    frame.height -= frame.height % 2;
    return frame;
}

}

SharedScreen::SharedScreen(Options const& options)
    : options_(options)
    , pointerMode_(portal_.abilities().bestPointerMode()) {
    auto shared = share();
    logicalWidth_ = shared.logicalWidth;
    connection_.emplace(std::move(shared.socket));
    openStream(shared.node);
    awaitFirstPicture();
    queue_.async([this] { follow(); });
}

SharedScreen::~SharedScreen() {
    isEnding_ = true;
    queue_.sync([] {});
}

SharedSource SharedScreen::share() {
    if (!portal_.abilities().has(options_.kind))
        throw CaptureError(CaptureError::Kind::unsupported,
                           fmt::format("“{}” cannot be recorded: this desktop does not share {}.", options_.source,
                                       options_.kind == ShareKind::monitor ? "whole screens" : "single windows"));
    auto const token = restoreTokens::of(options_.source);
    if (!token.empty()) restoreTokens::keep(options_.source, {}); // whatever comes of it, it is used
    auto shared =
        portal_.share({.kind = options_.kind, .pointer = pointerMode_, .token = token, .asking = options_.asking});
    checkKind(shared);
    restoreTokens::keep(options_.source, shared.token);
    return shared;
}

/// Some desktops let the user choose something else than was asked for. One that shares no windows cannot have shared
/// one, whatever it says: the portal of wlroots calls its screens so.
void SharedScreen::checkKind(SharedSource const& shared) const {
    auto const other = options_.kind == ShareKind::monitor ? ShareKind::window : ShareKind::monitor;
    bool const isOther = shared.kind != 0 && (shared.kind & static_cast<std::uint32_t>(options_.kind)) == 0;
    if (!isOther || !portal_.abilities().has(other)) return;
    throw CaptureError(
        CaptureError::Kind::badSource,
        fmt::format("A {} was to be recorded as “{}”, but a {} was shared. Share the other when the desktop "
                    "asks, or record the other.",
                    nameOf(options_.kind), options_.source, nameOf(other)));
}

void SharedScreen::openStream(std::uint32_t node) {
    stream_.emplace(*connection_,
                    pipewire::VideoStream::Options{
                        .node = node, .layouts = {DeviceLayout::bgrx, DeviceLayout::rgbx}, .fps = options_.fps},
                    pipewire::VideoStream::Handlers{
                        .format = [this](pipewire::VideoFormat const&) { formatSince_ = mediaClockNow(); },
                        .picture = [this](pipewire::VideoPicture const& picture) { note(picture); },
                        .pointer =
                            [this](std::optional<PixelPoint> point) {
                                std::lock_guard const guard(lock_);
                                pointer_ = point;
                            },
                    });
}

void SharedScreen::awaitFirstPicture() {
    using Clock = pipewire::Connection::Clock;
    auto const end = Clock::now() + longestStart;
    auto const isThere = [this] { return !frame_.isEmpty(); };
    while (!isThere() && !outside_ && stream_->isLive() && portal_.isOpen() && Clock::now() < end) {
        connection_->run(turn);
        askAgain();
    }
    if (outside_) failOutside(*outside_);
    if (!isThere()) failWithoutPicture();
}

/// For the picture of a still screen that is sent only when something changes, or that got lost while a format was
/// agreed on.
void SharedScreen::askAgain() {
    if (formatSince_ == 0) return repaint_.reset();
    double const waited = mediaClockNow() - formatSince_;
    if (waited > stillness && !repaint_) repaint_.emplace();
    if (repaint_) repaint_->again();
    if (waited < patience) return;
    stream_->restart();
    formatSince_ = mediaClockNow();
}

void SharedScreen::failOutside(DeviceFormat const& format) const {
    auto const rect = options_.area ? options_.area->rect : PixelRect{};
    throw CaptureError(CaptureError::Kind::badSource,
                       fmt::format("The area {},{},{},{} cannot be recorded: it lies outside the shared screen of "
                                   "{} × {} pixels.",
                                   rect.x, rect.y, rect.width, rect.height, format.width, format.height));
}

void SharedScreen::failWithoutPicture() const {
    throw CaptureError(CaptureError::Kind::unsupported,
                       fmt::format("The desktop shares the screen (portal version {}), but no picture of it has come "
                                   "within {} s: {}. Where nothing moves, some desktops send none: move the pointer "
                                   "while the recording begins.",
                                   portal_.abilities().version, longestStart.count(), stream_->state()));
}

bool SharedScreen::settleSize(DeviceFormat const& format) {
    PixelRect wanted{0, 0, format.width, format.height};
    if (options_.area) wanted = shaped(options_.area->rect.intersection(wanted), options_.area->shape);
    if (wanted.width < 2 || wanted.height < 2) {
        outside_ = format;
        return false;
    }
    frame_ = evenFrame(wanted);
    incoming_ = Image(frame_.width, frame_.height);
    latest_ = Image(frame_.width, frame_.height);
    double const scale = logicalWidth_ > 0 ? format.width / logicalWidth_ : 1;
    scaleFactor_ = std::clamp(scale, 1.0, 4.0);
    return true;
}

void SharedScreen::note(pipewire::VideoPicture const& whole) {
    if (!isWhole(whole)) return;
    auto const picture = shownPart(whole);
    if (frame_.isEmpty() && !settleSize(picture.format)) return;
    formatSince_ = 0;
    copyPart(incoming_, picture, frame_);
    std::lock_guard const guard(lock_);
    std::swap(incoming_, latest_);
    isNew_ = true;
}

void SharedScreen::follow() {
    while (!isEnding_ && stream_->isLive() && portal_.isOpen()) {
        connection_->run(turn);
        askAgain();
    }
    std::lock_guard const guard(lock_);
    isLost_ = true;
}

ScreenSource::Outcome SharedScreen::take(Image& picture) {
    std::lock_guard const guard(lock_);
    if (isLost_) return ScreenSource::Outcome::lost;
    if (!std::exchange(isNew_, false)) return ScreenSource::Outcome::unchanged;
    std::swap(picture, latest_);
    return ScreenSource::Outcome::changed;
}

std::optional<PixelPoint> SharedScreen::pointer() const {
    std::lock_guard const guard(lock_);
    return pointer_;
}

}
