#include <TavaroCore/Direction/SmartDirector.h>

#include <TavaroCore/Recording/RecordingMetadata.h>
#include <TavaroCore/Zoom/ZoomEvent.h>

#include <algorithm>
#include <cmath>
#include <optional>

#include <fmt/format.h>

namespace tavaro {

namespace {

constexpr double leadSeconds = 0.45;  // a zoom begins this long before its first click
constexpr double tailSeconds = 0.55;  // and lasts this long beyond its hold
constexpr double shortestAtEnd = 0.8; // room a zoom at the end of the take asks for
constexpr double shortest = 0.25;     // anything as short makes no zoom
constexpr double followGap = 2.5;     // a following camera rests longer between zooms
constexpr double followEagerness = 0.6;

/// The centre nearest to `focus` whose visible window lies inside the frame.
UnitPoint2 insideFrame(UnitPoint2 const& focus, double scale) {
    if (!(scale > 1)) return UnitPoint2::center;
    double const half = 0.5 / scale;
    return {std::clamp(focus.x, half, 1 - half), std::clamp(focus.y, half, 1 - half)};
}

/// Whether a zoom on the focus would show it too far off its centre to frame it.
bool liesTooNearTheEdge(UnitPoint2 const& focus, double scale) {
    if (!(scale > 1)) return false;
    auto const shown = insideFrame(focus, scale);
    double const limit = 0.6 * (0.5 / scale);
    return std::abs(shown.x - focus.x) > limit || std::abs(shown.y - focus.y) > limit;
}

TimeRange spanOf(ZoomCandidate const& candidate, double holdSeconds, double takeDuration) {
    TimeRange span{std::max(candidate.start - leadSeconds, 0.0),
                   holdSeconds + (candidate.end - candidate.start) + leadSeconds + tailSeconds};
    if (span.end() <= takeDuration) return span;
    span.duration = takeDuration - span.start;
    if (span.duration >= shortestAtEnd) return span;
    span.start = std::max(takeDuration - shortestAtEnd, 0.0);
    span.duration = takeDuration - span.start;
    return span;
}

bool hasDrag(ZoomCandidate const& candidate) {
    return std::any_of(candidate.clicks.begin(), candidate.clicks.end(),
                       [](ClickEvent const& click) { return click.isDrag; });
}

std::vector<double> typingTimes(RecordingMetadata const& recording) {
    std::vector<double> times;
    for (auto const& key : recording.keystrokes) {
        if (!key.isShortcut) times.push_back(key.t);
    }
    std::sort(times.begin(), times.end());
    return times;
}

std::vector<ClickEvent> sortedClicks(RecordingMetadata const& recording) {
    auto clicks = recording.clicks;
    std::stable_sort(clicks.begin(), clicks.end(), [](auto const& a, auto const& b) { return a.t < b.t; });
    return clicks;
}

/// Makes zooms of clusters, one after the other.
class ZoomMaker {
public:
    ZoomMaker(PolishOptions const& settings, DemoMode mode, std::span<double const> typing, double duration)
        : settings_(settings)
        , tuning_(zoomTuning(mode))
        , typing_(typing)
        , duration_(duration)
        , threshold_(tuning_.importanceThreshold * (settings.zoomFollowsCursor ? followEagerness : 1))
        , gap_(settings.zoomFollowsCursor && mode != DemoMode::plain ? followGap : tuning_.minimumGap) {}

    void add(ZoomCandidate const& candidate) {
        double const importance = SmartDirector::importance(candidate, typing_);
        if (importance < threshold_) return;
        double const range = tuning_.maximumScale - tuning_.minimumScale;
        double const scale =
            std::clamp(tuning_.minimumScale + range * importance, tuning_.minimumScale, tuning_.maximumScale);
        if (!settings_.zoomFollowsCursor && liesTooNearTheEdge(candidate.focus, scale)) return;
        auto const span = spanOf(candidate, tuning_.holdSeconds, duration_);
        if (span.duration <= shortest) return;
        if (!zooms_.empty() && span.start < zooms_.back().end() + gap_) {
            extend(zooms_.back(), candidate, span, scale);
        } else {
            zooms_.push_back(made(candidate, span, scale));
        }
    }

    std::vector<ZoomEvent> take() { return std::move(zooms_); }

private:
    void extend(ZoomEvent& zoom, ZoomCandidate const& candidate, TimeRange const& span, double scale) const {
        double const end = std::min(std::max(zoom.end(), span.end()), duration_);
        zoom.duration = std::max(end - zoom.start, shortest);
        zoom.scale = std::min(std::max(zoom.scale, scale), tuning_.maximumScale);
        zoom.center = insideFrame(UnitPoint2::lerp(zoom.center, candidate.focus.clamped(), 0.5), zoom.scale);
        zoom.followsCursor = zoom.followsCursor || hasDrag(candidate);
    }

    ZoomEvent made(ZoomCandidate const& candidate, TimeRange const& span, double scale) const {
        auto const count = candidate.clicks.size();
        return {
            .start = span.start,
            .duration = std::max(span.duration, 0.2),
            .rampIn = std::min(span.duration * 0.45, 0.7),
            .rampOut = std::min(span.duration * 0.35, 0.5),
            .center = candidate.focus.clamped(),
            .scale = std::max(scale, 1.0),
            .easing = Easing::smooth,
            .motionBlur = settings_.motionBlur ? 0.65 : 0,
            .isAutomatic = true,
            .followsCursor = settings_.zoomFollowsCursor || hasDrag(candidate),
            .style = ZoomStyle::camera,
            .loupeSize = 0.17,
            .note = count > 1 ? std::optional(fmt::format("{} clicks", count)) : std::nullopt,
        };
    }

    PolishOptions const& settings_;
    ZoomTuning const& tuning_;
    std::span<double const> typing_;
    double duration_;
    double threshold_;
    double gap_;
    std::vector<ZoomEvent> zooms_;
};

/// The first click inside the zoom that its visible window leaves out.
ClickEvent const* firstUnseen(ZoomEvent const& zoom, std::span<ClickEvent const> clicks) {
    double const half = 0.5 / zoom.scale;
    auto click = std::upper_bound(clicks.begin(), clicks.end(), zoom.start,
                                  [](double t, ClickEvent const& event) { return t < event.t; });
    for (; click != clicks.end() && click->t < zoom.end(); ++click) {
        if (std::abs(click->position.x - zoom.center.x) > half) return &*click;
        if (std::abs(click->position.y - zoom.center.y) > half) return &*click;
    }
    return nullptr;
}

}

std::vector<ZoomEvent> SmartDirector::zoomEvents(RecordingMetadata const& recording, double duration) const {
    if (!(duration > 0) || recording.clicks.empty()) return {};
    auto const clicks = sortedClicks(recording);
    auto const typing = typingTimes(recording);
    ZoomMaker maker(settings_, mode_, typing, duration);
    for (auto const& candidate : merge(clicks, zoomTuning(mode_))) maker.add(candidate);
    return endingBeforeUnseenClicks(maker.take(), clicks);
}

std::vector<ZoomCandidate> SmartDirector::merge(std::span<ClickEvent const> clicks, ZoomTuning const& tuning) {
    std::vector<ZoomCandidate> candidates;
    for (std::size_t i = 0; i < clicks.size(); ++i) {
        auto const& click = clicks[i];
        if (!candidates.empty()) {
            auto& current = candidates.back();
            if (click.t - current.end <= tuning.mergeSeconds &&
                current.focus.distance(click.position) <= tuning.mergeDistance) {
                current.clicks = clicks.subspan(i - current.clicks.size(), current.clicks.size() + 1);
                current.end = click.t;
                current.focus = UnitPoint2::lerp(current.focus, click.position,
                                                 1 / static_cast<double>(current.clicks.size())); // running mean
                continue;
            }
        }
        candidates.push_back({click.t, click.t, click.position, clicks.subspan(i, 1)});
    }
    return candidates;
}

std::vector<ZoomEvent> SmartDirector::endingBeforeUnseenClicks(std::vector<ZoomEvent> zooms,
                                                               std::span<ClickEvent const> clicks) {
    for (auto& zoom : zooms) {
        auto const* click = firstUnseen(zoom, clicks);
        if (!click) continue;
        double const length = click->t - 0.05 - zoom.start;
        if (length < zoom.rampIn + 0.6) continue;
        zoom.duration = length;
        zoom.rampOut = 0.35 * length;
    }
    return zooms;
}

std::vector<ZoomEvent> SmartDirector::clearOfHandMade(std::vector<ZoomEvent> zooms,
                                                      std::span<ZoomEvent const> existing) {
    std::erase_if(zooms, [&](ZoomEvent const& zoom) {
        return std::any_of(existing.begin(), existing.end(),
                           [&](ZoomEvent const& other) { return zoom.range().intersects(other.range()); });
    });
    return zooms;
}

}
