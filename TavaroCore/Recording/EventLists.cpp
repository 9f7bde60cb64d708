#include <TavaroCore/Recording/EventLists.h>

#include <algorithm>
#include <iterator>

namespace tavaro {

namespace {

template<class Events> auto position(Events& events, std::size_t count) {
    return events.begin() + static_cast<std::ptrdiff_t>(std::min(count, events.size()));
}

}

EventCounts eventCounts(RecordingMetadata const& log) {
    EventCounts result;
    forEachEventList([](auto const& events, std::size_t& count) { count = events.size(); }, log, result);
    return result;
}

EventCounts operator-(EventCounts const& a, EventCounts const& b) {
    return {a.cursorSamples - b.cursorSamples,
            a.rawCursorSamples - b.rawCursorSamples,
            a.clicks - b.clicks,
            a.keystrokes - b.keystrokes,
            a.appSpans - b.appSpans,
            a.micLevels - b.micLevels};
}

void appendEvents(RecordingMetadata& log, RecordingMetadata const& more) {
    forEachEventList([](auto& to, auto const& from) { to.insert(to.end(), from.begin(), from.end()); }, log, more);
}

RecordingMetadata takeFirstEvents(RecordingMetadata& log, EventCounts const& counts) {
    RecordingMetadata front;
    forEachEventList(
        [](auto& from, auto& to, std::size_t count) {
            auto const end = position(from, count);
            to.assign(std::make_move_iterator(from.begin()), std::make_move_iterator(end));
            from.erase(from.begin(), end);
        },
        log, front, counts);
    return front;
}

RecordingMetadata eventsAfter(RecordingMetadata const& log, EventCounts const& counts) {
    RecordingMetadata rest;
    forEachEventList(
        [](auto const& from, auto& to, std::size_t count) { to.assign(position(from, count), from.end()); }, log, rest,
        counts);
    return rest;
}

}
