#include <TavaroVoice/Voiceover/Placement.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroVoice/Voiceover/Private/HeldFrames.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace tavaro {

namespace {

constexpr double mostPushed = 0.1;    // seconds that a line may be late without a frame being held
constexpr double leastMissing = 0.01; // seconds behind the film's end that count
constexpr double longestLine = 86'400;
constexpr double same = 0.000001;

double within(double seconds) { return std::isfinite(seconds) ? std::clamp(seconds, 0.0, longestLine) : 0; }

std::optional<double> anchorOf(VoiceoverSegment const& line, double filmEnd) {
    if (!line.anchor || !std::isfinite(*line.anchor)) return std::nullopt;
    return std::clamp(*line.anchor, 0.0, filmEnd);
}

/// The places of the lines in the list, in the order in which they are spoken: a line without an anchor keeps to the
/// one before it.
std::vector<std::size_t> spokenOrder(std::vector<VoiceoverSegment> const& lines, double filmEnd) {
    std::vector<double> times;
    double latest = -1;
    for (auto const& line : lines) times.push_back(latest = anchorOf(line, filmEnd).value_or(latest));
    std::vector<std::size_t> order(lines.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::ranges::stable_sort(order, {}, [&](std::size_t i) { return times[i]; });
    return order;
}

/// Walks through the lines as they are spoken.
class Placing {
public:
    explicit Placing(DemoProject& project)
        : project_(project)
        , order_(spokenOrder(lines(), endWithoutHeldFrame(project))) {}

    /// Makes the room that the lines need.
    void hold() {
        free_ = end_ = 0;
        for (std::size_t n = 0; n < order_.size(); ++n) {
            auto const anchor = anchorOf(lines()[order_[n]], endWithoutHeldFrame(project_));
            if (project_.voiceover->stretchesVideoToFit && anchor && free_ - *anchor > mostPushed)
                holdBefore(n, *anchor);
            auto& line = lines()[order_[n]];
            if (anchor) line.anchor = std::min(*line.anchor, endWithoutHeldFrame(project_));
            lay(line);
        }
        double const end = project_.duration();
        if (end_ - end > leastMissing) hold(order_.size(), end, end_ - end, {});
    }
    void lay() {
        free_ = end_ = 0;
        for (auto const line : order_) lay(lines()[line]);
    }

private:
    std::vector<VoiceoverSegment>& lines() { return project_.voiceover->segments; }

    void holdBefore(std::size_t n, double anchor) {
        auto& line = lines()[order_[n]];
        line.anchor = project_.timeline.nearestEdge(anchor); // where the frame can be held
        hold(n, *line.anchor, free_ - *line.anchor, line.id);
    }

    /// The `n` lines before keep their anchors, also those that are just there.
    void hold(std::size_t n, double anchor, double seconds, UUID line) {
        std::vector<std::optional<double>> kept;
        for (std::size_t i = 0; i < n; ++i) kept.push_back(lines()[order_[i]].anchor);
        holdFrame(project_, anchor, seconds, line);
        for (std::size_t i = 0; i < n; ++i) lines()[order_[i]].anchor = kept[i];
    }

    void lay(VoiceoverSegment& line) {
        line.start = std::max(anchorOf(line, endWithoutHeldFrame(project_)).value_or(0), free_);
        end_ = line.start + within(line.duration());
        free_ = end_ + within(line.trailingPause);
    }

    DemoProject& project_;
    std::vector<std::size_t> const order_;
    double free_ = 0; // when the next line may begin
    double end_ = 0;  // when the last one ends
};

bool samePlaces(DemoProject const& a, DemoProject const& b) {
    bool const sameLines =
        std::ranges::equal(a.voiceover->segments, b.voiceover->segments,
                           [](auto const& one, auto const& other) { return std::abs(one.start - other.start) < same; });
    return sameLines &&
           std::ranges::equal(heldFrames(a), heldFrames(b), [](VideoClip const& one, VideoClip const& other) {
               return one.id == other.id && std::abs(one.start - other.start) < same &&
                      std::abs(one.duration - other.duration) < same;
           });
}

}

void placeVoiceover(DemoProject& project) {
    if (!project.voiceover) return;
    auto anew = project;
    if (project.duration() > 0) {
        withdrawHeldFrames(anew);
        Placing(anew).hold();
    }
    Placing(anew).lay();
    Placing(project).lay();
    // Taking out and holding again rounds the times, so what is right already stays as it is.
    if (!samePlaces(project, anew)) project = std::move(anew);
}

}
