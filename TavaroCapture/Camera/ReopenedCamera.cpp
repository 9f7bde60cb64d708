#include <TavaroCapture/Camera/Private/ReopenedCamera.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/Sources/Private/Patience.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
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
constexpr double betweenLooks = 0.05; // at whether the thread hangs
constexpr int looksOfPatience = 10;

}

/// What the thread that works the camera shares with those who wait for it. Any thread. The handlers run while it is
/// locked, so that none does once it has ended.
class ReopenedCamera::Filming {
public:
    explicit Filming(Options options) : options_(std::move(options)) {}

    void begin(CameraHandlers handlers);
    void end();
    void waitForPicture(std::chrono::milliseconds atMost);
    /// Whether a call hangs, in which the camera's thread cannot see that no pictures come.
    void look();
    /// The camera's thread's: until the end, whatever happens to the camera.
    void run();

private:
    enum class State { idle, filming, ending };

    std::unique_ptr<CameraFeed> opened() const;
    void film(CameraFeed& feed);
    void awaitFirst();
    bool goesOn();
    void take(DevicePictures& pictures, FedPicture const& fed, double period);
    void handOn(CapturedPicture const& picture, double period);
    void noteGone();
    void idle();
    bool isEnding() const;
    bool isOverdue() const { return mediaClockNow() - seenAt_ > patience_; } // locked

    Options const options_;
    std::mutex mutable mutex_; // guards all that follows
    std::condition_variable changed_;
    CameraHandlers handlers_;
    State state_ = State::idle;
    bool hasBegun_ = false;
    bool isAway_ = false;
    double shownUntil_ = 0; // moment of the media clock: the next picture is due
    double seenAt_ = 0;     // when the last one came, or was first waited for
    double patience_ = wakingPatience;
    int looks_ = 0; // since the thread's last turn
};

void ReopenedCamera::Filming::begin(CameraHandlers handlers) {
    std::lock_guard const guard(mutex_);
    handlers_ = std::move(handlers);
    state_ = State::filming;
    shownUntil_ = seenAt_ = mediaClockNow();
}

void ReopenedCamera::Filming::end() {
    std::lock_guard const guard(mutex_);
    state_ = State::ending;
    handlers_ = {};
    changed_.notify_all();
}

void ReopenedCamera::Filming::waitForPicture(std::chrono::milliseconds atMost) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, atMost, [this] { return hasBegun_; });
}

bool ReopenedCamera::Filming::isEnding() const {
    std::lock_guard const guard(mutex_);
    return state_ == State::ending;
}

void ReopenedCamera::Filming::look() {
    {
        std::lock_guard const guard(mutex_);
        if (++looks_ < looksOfPatience || !isOverdue()) return;
    }
    noteGone();
}

void ReopenedCamera::Filming::run() {
    while (!isEnding()) {
        if (auto const feed = opened()) film(*feed);
        noteGone();
        idle();
    }
}

/// None while the camera cannot be had.
std::unique_ptr<CameraFeed> ReopenedCamera::Filming::opened() const {
    try {
        auto feed = options_.open();
        if (feed && filmedSize(feed->format()) == options_.size) return feed;
    } catch (Error const& error) {
        spdlog::debug("The camera cannot be opened: {}", error.what());
    }
    return nullptr;
}

/// Until the end, or until the camera gives nothing any more.
void ReopenedCamera::Filming::film(CameraFeed& feed) {
    DevicePictures pictures(feed.format());
    double const period = 1 / std::max(feed.fps(), 1.0);
    awaitFirst();
    while (goesOn() && feed.run(turn, [&](FedPicture const& fed) { take(pictures, fed, period); })) {
    }
}

void ReopenedCamera::Filming::awaitFirst() {
    std::lock_guard const guard(mutex_);
    seenAt_ = mediaClockNow();
    patience_ = wakingPatience;
}

bool ReopenedCamera::Filming::goesOn() {
    std::lock_guard const guard(mutex_);
    looks_ = 0;
    return state_ == State::filming && !isOverdue();
}

/// What cannot be seen is counted as missing, but not while the camera counts as away.
void ReopenedCamera::Filming::take(DevicePictures& pictures, FedPicture const& fed, double period) {
    auto const picture = fed.isDamaged ? std::nullopt : pictures.read(fed.bytes, fed.stride);
    std::lock_guard const guard(mutex_);
    if (state_ != State::filming) return;
    if (auto const missed = fed.missedBefore + (picture ? 0 : 1); missed > 0 && !isAway_) handlers_.missed(missed);
    if (picture) handOn({*picture, fed.capturedAt - options_.lag}, period);
}

/// Locked.
void ReopenedCamera::Filming::handOn(CapturedPicture const& picture, double period) {
    if (std::exchange(isAway_, false)) handlers_.returned(picture.capturedAt);
    handlers_.picture(picture);
    shownUntil_ = picture.capturedAt + period;
    seenAt_ = mediaClockNow();
    patience_ = std::max(periodsOfPatience * period, leastPatience);
    hasBegun_ = true;
    changed_.notify_all();
}

void ReopenedCamera::Filming::noteGone() {
    std::lock_guard const guard(mutex_);
    if (state_ == State::filming && !std::exchange(isAway_, true)) handlers_.lost(shownUntil_);
}

void ReopenedCamera::Filming::idle() {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, betweenTries, [this] { return state_ == State::ending; });
}

Size2 ReopenedCamera::filmedSize(DeviceFormat const& format) {
    return {std::int64_t{format.width} / 2 * 2, std::int64_t{format.height} / 2 * 2};
}

ReopenedCamera::ReopenedCamera(Options options)
    : options_(std::move(options))
    , filming_(std::make_shared<Filming>(options_)) {}

ReopenedCamera::~ReopenedCamera() { stop(); }

void ReopenedCamera::start(CameraHandlers handlers) {
    filming_->begin(std::move(handlers));
    queue_.async([filming = filming_] { filming->run(); });
    watch_.startTimer(mediaClockNow(), betweenLooks, [filming = filming_](double) { filming->look(); });
    filming_->waitForPicture(longestStart);
}

void ReopenedCamera::stop() {
    if (std::exchange(isStopped_, true)) return;
    watch_.stopTimer();
    filming_->end();
    if (!queue_.settles(answerPatience)) queue_.leave();
}

}
