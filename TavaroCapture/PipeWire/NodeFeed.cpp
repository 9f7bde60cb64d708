#include <TavaroCapture/PipeWire/Private/NodeFeed.h>

#include <TavaroCapture/Sources/CaptureError.h>

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <utility>

namespace tavaro::pipewire {

namespace {

using namespace std::chrono_literals;

constexpr auto longestAgreement = 2s;
// More that are missing at once are a counter that jumped.
constexpr std::uint64_t mostMissed = 1000;

VideoStream::Options optionsFor(Node const& node, CameraMode const& mode) {
    return {.role = VideoStream::Options::Role::camera,
            .node = node.id,
            .layouts = {mode.layout},
            .size = VideoStream::Options::Size::exact,
            .width = mode.width,
            .height = mode.height,
            .fps = static_cast<int>(std::ceil(mode.fps > 0 ? mode.fps : usualCameraMode.fps))};
}

}

NodeFeed::NodeFeed(std::unique_ptr<Connection> connection, Node const& node, CameraMode const& mode)
    : connection_(std::move(connection))
    , node_(node.id)
    , stream_(*connection_, optionsFor(node, mode),
              {.format = [this](VideoFormat const& format) { noteFormat(format); },
               .picture = [this](VideoPicture const& picture) { handOn(picture); }}) {
    auto const end = Connection::Clock::now() + longestAgreement;
    while (!isAgreed_ && stream_.isLive() && Connection::Clock::now() < end) connection_->run(10ms);
    if (isAgreed_) return;
    throw CaptureError(CaptureError::Kind::noCamera,
                       fmt::format("The camera “{}” does not give the pictures that it offers: {}.", node.description,
                                   stream_.state()));
}

/// Another form in the middle counts as another camera.
void NodeFeed::noteFormat(VideoFormat const& format) {
    isChanged_ = isAgreed_ && format.pictures != format_;
    format_ = format.pictures;
    if (format.fps >= 1) fps_ = format.fps;
    isAgreed_ = true;
}

/// A node that goes leaves its stream waiting, without a word.
bool NodeFeed::run(std::chrono::milliseconds atMost, FunctionRef<void(FedPicture const&)> take) {
    take_ = take;
    connection_->run(atMost);
    take_.reset();
    return !isChanged_ && stream_.isLive() && connection_->has(node_);
}

/// What comes while nobody runs it is left.
void NodeFeed::handOn(VideoPicture const& picture) {
    if (!take_ || isChanged_) return;
    (*take_)({.bytes = picture.bytes,
              .stride = std::max(picture.format.stride, std::ptrdiff_t{0}),
              .capturedAt = picture.capturedAt,
              .missedBefore = picture.sequence ? missedBefore(*picture.sequence) : 0,
              .isDamaged = picture.isDamaged});
}

std::int64_t NodeFeed::missedBefore(std::uint64_t sequence) {
    auto const before = std::exchange(last_, sequence);
    std::uint64_t const step = before ? sequence - *before : 1;
    return step > 1 && step <= mostMissed ? static_cast<std::int64_t>(step - 1) : 0;
}

}
