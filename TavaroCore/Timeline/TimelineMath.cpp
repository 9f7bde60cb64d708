#include <TavaroCore/Timeline/Private/TimelineMath.h>

#include <algorithm>

namespace tavaro::TimelineMath {

std::optional<TimeRange> map(TimeRange const& item, TimeRange const& removing) {
    if (item.end() <= removing.start) return item;
    if (removing.end() <= item.start) return TimeRange{item.start - removing.duration, item.duration};
    double const before = removing.start - item.start;
    double const after = item.end() - removing.end();
    double const kept = std::max(before, 0.0) + std::max(after, 0.0);
    if (!(kept > shortestPiece)) return std::nullopt;
    return TimeRange{std::min(item.start, removing.start), kept};
}

double map(double time, TimeRange const& removing) {
    if (time < removing.start) return time;
    return time >= removing.end() ? time - removing.duration : removing.start;
}

MediaPieces split(MediaSpan const& item, double speed, TimeRange const& removing) {
    if (item.end() <= removing.start) return {item, std::nullopt};
    if (removing.end() <= item.start) {
        return {MediaSpan{item.start - removing.duration, item.sourceStart, item.duration}, std::nullopt};
    }
    MediaPieces pieces;
    double const before = removing.start - item.start;
    double const after = item.end() - removing.end();
    if (before > shortestPiece) pieces.head = MediaSpan{item.start, item.sourceStart, before};
    if (after > shortestPiece) {
        double const skipped = removing.end() - item.start;
        pieces.tail = MediaSpan{removing.start, item.sourceStart + skipped * speed, after};
    }
    return pieces;
}

}
