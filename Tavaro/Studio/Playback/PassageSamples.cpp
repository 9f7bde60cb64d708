#include <Tavaro/Studio/Playback/PassageSamples.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr std::size_t lapsKept = 64;                  // more than fit into what an output holds
constexpr std::int64_t shortestLap = audioRate / 100; // less is no passage to repeat

std::int64_t samples(double seconds) { return std::llround(seconds * audioRate); }

}

PassageSamples::PassageSamples(Passage const& passage, FilmSound& sound) : passage_(passage), sound_(sound) {
    begin(passage.from);
}

void PassageSamples::begin(double at) {
    laps_.push_back({filled_, at});
    if (laps_.size() > lapsKept) laps_.pop_front();
    position_ = samples(at);
    stretch_.reset();
    if (passage_.speed == 1) return;
    stretch_.emplace(passage_.speed, [this, origin = position_](std::int64_t from, std::span<StereoSample> into) {
        sound_.render(origin + from, into);
    });
}

/// Samples until this lap ends.
std::int64_t PassageSamples::left() const {
    double const seconds = (passage_.end - laps_.back().at) / passage_.speed;
    return std::max<std::int64_t>(laps_.back().first + samples(seconds) - filled_, 0);
}

void PassageSamples::read(std::span<StereoSample> into) {
    if (stretch_) {
        stretch_->read(into);
    } else {
        sound_.render(position_, into);
        position_ += std::ssize(into);
    }
    filled_ += std::ssize(into);
}

void PassageSamples::fill(std::span<StereoSample> into) {
    bool const repeats = passage_.atEnd == Passage::AtEnd::repeat &&
                         samples((passage_.end - passage_.start) / passage_.speed) >= shortestLap;
    while (!into.empty()) {
        if (left() == 0 && repeats) begin(passage_.start);
        auto const count = std::min(left(), std::ssize(into));
        if (count == 0) break;
        read(into.first(static_cast<std::size_t>(count)));
        into = into.subspan(static_cast<std::size_t>(count));
    }
    std::ranges::fill(into, StereoSample{});
    // What follows the end counts too, but belongs to no moment of the film.
    filled_ += std::ssize(into);
}

double PassageSamples::at(double sample) const {
    auto const lap = std::ranges::find_if(laps_.rbegin(), laps_.rend(),
                                          [&](Lap const& each) { return static_cast<double>(each.first) <= sample; });
    auto const& found = lap == laps_.rend() ? laps_.front() : *lap;
    double const seconds = (sample - static_cast<double>(found.first)) / audioRate * passage_.speed;
    return std::min(found.at + std::max(seconds, 0.0), std::max(passage_.end, found.at));
}

void PassageSamples::setEnd(double end) { passage_.end = end; }

}
