#include <TavaroCapture/Camera/Private/ReopenedCamera.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <spdlog/spdlog.h>
#include <utility>

namespace tavaro {

namespace {

using namespace std::chrono_literals;

constexpr auto turn = 20ms;
constexpr auto betweenTries = 250ms;
constexpr auto longestStart = 2s;
// Some cameras need seconds to wake up; one that is awake does not stop for so many pictures.
constexpr double wakingPatience = 4;
constexpr double periodsOfPatience = 5;
constexpr double leastPatience = 0.5;

}

Size2 ReopenedCamera::filmedSize(DeviceFormat const& format) {
    return {std::int64_t{format.width} / 2 * 2, std::int64_t{format.height} / 2 * 2};
}

ReopenedCamera::ReopenedCamera(Options options) : options_(std::move(options)) {}

ReopenedCamera::~ReopenedCamera() { stop(); }

void ReopenedCamera::start(CameraHandlers handlers) {
    handlers_ = std::move(handlers);
    enter(State::filming);
    queue_.async([this] { run(); });
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, longestStart, [this] { return hasBegun_; });
}

void ReopenedCamera::stop() {
    enter(State::ending);
    queue_.sync([] {});
}

bool ReopenedCamera::isEnding() const {
    std::lock_guard const guard(mutex_);
    return state_ == State::ending;
}

void ReopenedCamera::enter(State state) {
    std::lock_guard const guard(mutex_);
    state_ = state;
    changed_.notify_all();
}

/// Until the end, whatever happens to the camera.
void ReopenedCamera::run() {
    while (!isEnding()) {
        if (auto const feed = opened()) film(*feed);
        if (isEnding()) return;
        noteGone();
        idle();
    }
}

/// None while the camera cannot be had.
std::unique_ptr<CameraFeed> ReopenedCamera::opened() const {
    try {
        auto feed = options_.open();
        if (feed && filmedSize(feed->format()) == options_.size) return feed;
    } catch (Error const& error) {
        spdlog::debug("The camera cannot be opened: {}", error.what());
    }
    return nullptr;
}

/// Until the end, or until the camera gives nothing any more.
void ReopenedCamera::film(CameraFeed& feed) {
    DevicePictures pictures(feed.format());
    double const rate = std::max(feed.fps(), 1.0);
    double patience = wakingPatience;
    double seenAt = mediaClockNow();
    auto const note = [&](FedPicture const& fed) {
        if (!take(pictures, fed)) return;
        seenAt = mediaClockNow();
        patience = std::max(periodsOfPatience / rate, leastPatience);
    };
    while (!isEnding() && feed.run(turn, note))
        if (mediaClockNow() - seenAt > patience) return;
}

/// False for a picture that cannot be seen.
bool ReopenedCamera::take(DevicePictures& pictures, FedPicture const& fed) {
    auto const picture = fed.isDamaged ? std::nullopt : pictures.read(fed.bytes, fed.stride);
    if (auto const missed = fed.missedBefore + (picture ? 0 : 1); missed > 0) handlers_.missed(missed);
    if (!picture) return false;
    if (std::exchange(isAway_, false)) handlers_.returned();
    handlers_.picture({picture->pixels, picture->order, fed.capturedAt - options_.lag});
    noteBegun();
    return true;
}

void ReopenedCamera::noteBegun() {
    std::lock_guard const guard(mutex_);
    hasBegun_ = true;
    changed_.notify_all();
}

void ReopenedCamera::noteGone() {
    if (!std::exchange(isAway_, true)) handlers_.lost();
}

void ReopenedCamera::idle() {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, betweenTries, [this] { return state_ == State::ending; });
}

}
