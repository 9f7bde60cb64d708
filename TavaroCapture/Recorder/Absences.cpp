#include <TavaroCapture/Recorder/Private/Absences.h>

#include <fmt/format.h>

namespace tavaro {

void Absences::begin(double time) {
    std::lock_guard const guard(lock_);
    if (absences_.empty() || absences_.back().to) absences_.push_back({time, std::nullopt});
}

void Absences::end(double time) {
    std::lock_guard const guard(lock_);
    constexpr double shortest = 0.05; // seconds
    if (absences_.empty() || absences_.back().to) return;
    absences_.back().to = time;
    if (time - absences_.back().from < shortest) absences_.pop_back();
}

bool Absences::isAway() const {
    std::lock_guard const guard(lock_);
    return !absences_.empty() && !absences_.back().to;
}

std::vector<double> Absences::beginnings() const {
    std::lock_guard const guard(lock_);
    std::vector<double> result;
    for (auto const& absence : absences_) result.push_back(absence.from);
    return result;
}

std::optional<std::string> Absences::sentence(StreamRole role) const {
    std::lock_guard const guard(lock_);
    if (absences_.empty()) return std::nullopt;
    auto const name = spokenName(role);
    auto const instead = isSound(role) ? "there is silence" : "its last picture stays";
    auto const& last = absences_.back();
    if (absences_.size() == 1 && last.to)
        return fmt::format("The {} was away from {:.1f} to {:.1f} seconds into the take; {}.", name, last.from,
                           *last.to, instead);
    if (absences_.size() == 1) return fmt::format("The {} went away {:.1f} seconds into the take.", name, last.from);
    double away = 0;
    for (auto const& absence : absences_)
        if (absence.to) away += *absence.to - absence.from;
    auto const rest = last.to ? "" : fmt::format(" It went for good {:.1f} seconds into it.", last.from);
    auto const returns = absences_.size() - (last.to ? 0 : 1);
    return fmt::format("The {} was away {} in the take, for {:.1f} seconds in all; {}.{}", name,
                       returns == 1 ? "once" : fmt::format("{} times", returns), away, instead, rest);
}

}
