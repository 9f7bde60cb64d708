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

}

void settle(RecordingMetadata& log, Size2 frame) {
    if (log.captureSize.width <= 0 || log.captureSize.height <= 0) log.captureSize = frame;
    forEachEventList([](auto& events) { sortByTime(events); }, log);
}

void trimToDuration(RecordingMetadata& log, double duration) {
    forEachEventList([&](auto& events) { trim(events, duration); }, log);
}

}
