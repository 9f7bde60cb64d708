#pragma once

#include <TavaroCore/Values/TimeRange.h>

#include <optional>

/// Where timed items go when a span of the output is cut out and what follows moves up:
///
///     item      ······[========]········        [======]
///     removed        ···[####)···········  →  the item loses what lay in the cut
///
/// Pure arithmetic on seconds; every edit of a document that takes time away uses these rules.
namespace tavaro::TimelineMath {

/// What is left of an item may not be shorter: a piece of this length or less is dropped.
inline constexpr double shortestPiece = 0.001;

/// An item that only has a start and a duration. It keeps what lies outside the cut, as one piece that begins at its
/// start or at the cut, whichever is earlier; nothing when what is left is too short.
std::optional<TimeRange> map(TimeRange const& item, TimeRange const& removing);

/// A point in time: earlier by the cut's length when it lay behind the cut, at the cut when it lay inside.
double map(double time, TimeRange const& removing);

/// A stretch of an item that plays media, with the time in the media at which it begins.
struct MediaSpan {
    double start = 0;
    double sourceStart = 0;
    double duration = 0;

    double end() const { return start + duration; }
    bool operator==(MediaSpan const&) const = default;
};

/// What is left of a media item: the part before the cut and the part behind it. An item that the cut does not touch
/// is its head alone.
struct MediaPieces {
    std::optional<MediaSpan> head;
    std::optional<MediaSpan> tail;
};

/// An item that plays media at `speed` (media seconds a second of output).
MediaPieces split(MediaSpan const& item, double speed, TimeRange const& removing);

}
