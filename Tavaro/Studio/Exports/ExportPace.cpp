#include <Tavaro/Studio/Exports/ExportPace.h>

namespace tavaro {

namespace {

constexpr double memory = 10;      // seconds over which the pace is taken
constexpr double enoughToTell = 1; // seconds
constexpr double apart = 0.1;      // seconds between moments that are kept

}

void ExportPace::note(ExportProgress const& progress, double now) {
    changed_ = now;
    progress_ = progress;
    if (progress.stage != ExportStage::rendering) return;
    auto const isNext = moments_.empty() || now - moments_.back().at >= apart;
    if (isNext) moments_.push_back({now, static_cast<double>(progress.framesWritten)});
    while (moments_.size() > 2 && now - moments_[1].at >= memory) moments_.pop_front();
}

/// Also while nothing comes any more, so that it sinks.
std::optional<double> ExportPace::framesASecond(double now) const {
    if (moments_.empty() || now - moments_.front().at < enoughToTell) return std::nullopt;
    double const frames = static_cast<double>(progress_.framesWritten) - moments_.front().frames;
    return frames > 0 ? std::optional(frames / (now - moments_.front().at)) : std::nullopt;
}

std::optional<double> ExportPace::secondsLeft(double now) const {
    auto const pace = framesASecond(now);
    if (!pace) return std::nullopt;
    return static_cast<double>(progress_.totalFrames - progress_.framesWritten) / *pace;
}

}
