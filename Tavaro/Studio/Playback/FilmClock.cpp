#include <Tavaro/Studio/Playback/FilmClock.h>

#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavaro {

namespace {

constexpr double shortestLap = 1e-3; // seconds; less is no passage to repeat
constexpr double largestDrift = 0.06;
constexpr double share = 0.1; // of a drift that is taken away when it is seen

bool repeats(Passage const& passage) {
    return passage.atEnd == Passage::AtEnd::repeat && passage.end - passage.start > shortestLap;
}

}

FilmClock::FilmClock(Time time) : time_(std::move(time)) {}
FilmClock::FilmClock() : FilmClock(mediaClockNow) {}

double FilmClock::positionLocked(double moment) const {
    if (!isRunning_) return passage_.from;
    double const at = passage_.from + std::max(moment - moment_, 0.0) * passage_.speed;
    if (at < passage_.end) return at;
    if (!repeats(passage_)) return std::max(passage_.end, 0.0);
    return passage_.start + std::fmod(at - passage_.end, passage_.end - passage_.start);
}

double FilmClock::position(double moment) const {
    std::lock_guard const lock(mutex_);
    return positionLocked(moment);
}

bool FilmClock::isRunning() const {
    std::lock_guard const lock(mutex_);
    return isRunning_;
}

bool FilmClock::isAtEnd() const {
    double const moment = now();
    std::lock_guard const lock(mutex_);
    return isRunning_ && !repeats(passage_) && positionLocked(moment) >= passage_.end;
}

void FilmClock::hold(double at) {
    std::lock_guard const lock(mutex_);
    passage_.from = at;
    isRunning_ = false;
}

void FilmClock::run(Passage const& passage) {
    double const moment = now();
    std::lock_guard const lock(mutex_);
    passage_ = passage;
    moment_ = moment;
    isRunning_ = true;
}

void FilmClock::setEnd(double end) {
    std::lock_guard const lock(mutex_);
    passage_.end = end;
}

void FilmClock::heard(double at) {
    double const moment = now();
    std::lock_guard const lock(mutex_);
    if (!isRunning_) return;
    double const expected = positionLocked(moment);
    double drift = at - expected;
    double const lap = passage_.end - passage_.start;
    if (repeats(passage_) && std::abs(drift) > lap / 2) drift -= std::copysign(lap, drift);
    bool const isFar = std::abs(drift) > largestDrift;
    passage_.from = isFar ? at : expected + share * drift;
    moment_ = moment;
}

}
