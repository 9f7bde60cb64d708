#include <TavaroCore/Recording/SettledRecording.h>

#include <TavaroCore/Recording/EventLists.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

// Only what has a time of its own can be out of order; levels are in the order of their time by nature.
template<class Event> void sortByTime(std::vector<Event>& events) {
    if constexpr (requires(Event const& event) { event.t; })
        std::stable_sort(events.begin(), events.end(), [](Event const& a, Event const& b) { return a.t < b.t; });
}

template<class Event> void trim(std::vector<Event>& events, double duration) {
    std::erase_if(events, [&](Event const& event) { return event.t > duration; });
    for (auto& event : events) {
        if constexpr (requires { event.dragEnd; }) {
            if (event.dragEnd) event.dragEnd = std::min(*event.dragEnd, duration);
        }
    }
}

void trim(std::vector<AppFocusSpan>& spans, double duration) {
    std::erase_if(spans, [&](AppFocusSpan const& span) { return span.t >= duration; });
    for (auto& span : spans) span.duration = std::min(span.duration, duration - span.t);
}

void trim(std::vector<float>& levels, double duration) {
    if (!levels.empty()) levels.resize(static_cast<std::size_t>(std::max(std::round(duration / micLevelSeconds), 1.0)));
}

template<class Event> void cut(std::vector<Event>& events, double start) {
    std::erase_if(events, [&](Event const& event) { return event.t < start; });
    for (auto& event : events) {
        event.t -= start;
        if constexpr (requires { event.dragEnd; }) {
            if (event.dragEnd) *event.dragEnd -= start;
        }
    }
}

void cut(std::vector<AppFocusSpan>& spans, double start) {
    std::erase_if(spans, [&](AppFocusSpan const& span) { return span.t + span.duration <= start; });
    for (auto& span : spans) {
        double const end = span.t + span.duration - start;
        span.t = std::max(span.t - start, 0.0);
        span.duration = end - span.t;
    }
}

void cut(std::vector<float>& levels, double start) {
    auto const count = std::min(static_cast<std::size_t>(std::round(start / micLevelSeconds)), levels.size());
    levels.erase(levels.begin(), levels.begin() + static_cast<std::ptrdiff_t>(count));
}

}

void settle(RecordingMetadata& log, Size2 frame) {
    if (log.captureSize.width <= 0 || log.captureSize.height <= 0) log.captureSize = frame;
    forEachEventList([](auto& events) { sortByTime(events); }, log);
}

void trimToDuration(RecordingMetadata& log, double duration) {
    forEachEventList([&](auto& events) { trim(events, duration); }, log);
}

void cutStart(RecordingMetadata& log, double start) {
    forEachEventList([&](auto& events) { cut(events, start); }, log);
}

}
