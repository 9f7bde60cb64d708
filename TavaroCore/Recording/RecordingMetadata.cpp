#include <TavaroCore/Recording/RecordingMetadata.h>

#include <algorithm>

namespace tavaro {

double RecordingMetadata::duration() const {
    double last = 0;
    if (!cursorSamples.empty()) last = std::max(last, cursorSamples.back().t);
    if (!clicks.empty()) last = std::max({last, clicks.back().t, clicks.back().dragEnd.value_or(0)});
    if (!keystrokes.empty()) last = std::max(last, keystrokes.back().t);
    for (auto const& span : appSpans) last = std::max(last, span.t + span.duration);
    return last;
}

bool RecordingMetadata::isEmpty() const {
    return cursorSamples.empty() && clicks.empty() && keystrokes.empty() && appSpans.empty() && micLevels.empty();
}

std::optional<UnitPoint2> RecordingMetadata::cursorPosition(double t) const {
    return tavaro::cursorPosition(cursorSamples, t);
}

AppFocusSpan const* RecordingMetadata::application(double t) const {
    auto const found = std::find_if(appSpans.rbegin(), appSpans.rend(), [&](AppFocusSpan const& span) {
        return span.t <= t && t < span.t + span.duration;
    });
    return found == appSpans.rend() ? nullptr : &*found;
}

std::optional<UnitPoint2> cursorPosition(std::vector<CursorSample> const& samples, double t) {
    if (samples.empty()) return std::nullopt;
    if (t <= samples.front().t) return samples.front().position;
    if (t >= samples.back().t) return samples.back().position;
    auto const after = std::upper_bound(samples.begin(), samples.end(), t,
                                        [](double time, CursorSample const& sample) { return time < sample.t; });
    if (after == samples.begin() || after == samples.end()) return samples.back().position; // t is not a number
    auto const& a = *(after - 1);
    auto const& b = *after;
    if (b.t <= a.t) return a.position;
    return UnitPoint2::lerp(a.position, b.position, (t - a.t) / (b.t - a.t));
}

}
