#pragma once

#include <TavaroCore/Recording/RecordingMetadata.h>

#include <cstddef>
#include <optional>
#include <vector>

/// Which members of a log are lists that grow while a take is recorded. Whatever cuts, joins, counts or sorts logs
/// walks this one table, so that none can forget a list: a new list is one line in `forEachEventList`.
namespace tavaro {

/// How much there is of each list of a log, or up to where of each something holds.
struct EventCounts {
    std::size_t cursorSamples = 0;
    std::size_t rawCursorSamples = 0;
    std::size_t clicks = 0;
    std::size_t keystrokes = 0;
    std::size_t appSpans = 0;
    std::size_t micLevels = 0;

    bool operator==(EventCounts const&) const = default;
};

namespace detail {

inline std::vector<CursorSample>& ensureRawSamples(RecordingMetadata& log) {
    if (!log.rawCursorSamples) log.rawCursorSamples.emplace();
    return *log.rawCursorSamples;
}
inline std::vector<CursorSample> const& ensureRawSamples(RecordingMetadata const& log) {
    static std::vector<CursorSample> const none;
    return log.rawCursorSamples ? *log.rawCursorSamples : none;
}
inline std::size_t& ensureRawSamples(EventCounts& counts) { return counts.rawCursorSamples; }
inline std::size_t const& ensureRawSamples(EventCounts const& counts) { return counts.rawCursorSamples; }

inline bool hasRawSamples(RecordingMetadata const& log) { return log.rawCursorSamples.has_value(); }
inline bool hasRawSamples(EventCounts const&) { return false; }

}

/// Calls `visit(list of the first, list of the second, …)` for each list of one log, or of several logs and counts side
/// by side. A list that a log may lack is visited where one of the logs has it; the others have it afterwards, empty.
template<class Visit, class... Logs> void forEachEventList(Visit&& visit, Logs&... logs) {
    visit(logs.cursorSamples...);
    if ((detail::hasRawSamples(logs) || ...)) visit(detail::ensureRawSamples(logs)...);
    visit(logs.clicks...);
    visit(logs.keystrokes...);
    visit(logs.appSpans...);
    visit(logs.micLevels...);
}

EventCounts eventCounts(RecordingMetadata const& log);
EventCounts operator-(EventCounts const& a, EventCounts const& b);

/// Length of one entry of `micLevels` while a take is recorded.
inline constexpr double micLevelSeconds = 0.1;

/// Adds the events of `more` to the ends of the log's lists.
void appendEvents(RecordingMetadata& log, RecordingMetadata const& more);
/// Moves the first events out of the log, so many of each list.
RecordingMetadata takeFirstEvents(RecordingMetadata& log, EventCounts const& counts);
/// A copy of the log's events but the first ones.
RecordingMetadata eventsAfter(RecordingMetadata const& log, EventCounts const& counts);

}
