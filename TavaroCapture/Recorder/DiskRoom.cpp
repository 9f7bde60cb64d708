#include <TavaroCapture/Recorder/Private/DiskRoom.h>

#include <algorithm>

namespace tavaro {

namespace {

constexpr double longest = 30; // seconds
constexpr double shortest = 1;
constexpr double lookAhead = 3; // seconds: what is written before the take has ended

}

void DiskRoom::note(State const& state) {
    if (!states_.empty() && states_.back().at >= state.at) states_.pop_back(); // while the take is paused
    states_.push_back(state);
    while (states_.front().at < state.at - longest) states_.pop_front();
}

double DiskRoom::rate() const {
    auto const &first = states_.front(), &last = states_.back();
    double const seconds = last.at - first.at;
    return seconds <= 0
               ? 0
               : std::max(static_cast<double>(last.written) - static_cast<double>(first.written), 0.0) / seconds;
}

/// The document, the thumbnail and the next save have to fit too.
double DiskRoom::room() const {
    constexpr double kept = 8 << 20, leastShare = 0.125;
    auto const& last = states_.back();
    double const reserve = std::min(kept, static_cast<double>(last.size) * leastShare);
    double const spare = static_cast<double>(last.free) - static_cast<double>(last.written) - reserve;
    return use_ == Use::working ? spare / 2 : spare;
}

std::optional<double> DiskRoom::seconds() const {
    if (states_.empty() || states_.back().at - states_.front().at < shortest || rate() <= 0) return std::nullopt;
    return std::max(room(), 0.0) / rate();
}

bool DiskRoom::isUsedUp() const { return !states_.empty() && room() <= rate() * lookAhead; }

}
