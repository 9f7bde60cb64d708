#pragma once

#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Timeline/Timeline.h>

#include <optional>

namespace tavaro {

struct DemoProject;
struct RedactionTrack;

/// Edits of what is hidden in a recording, by the times of the film. `at` is of the film too: of what it shows several
/// times, the place nearest to that is meant. What was changed so is no scan's any more.

/// Where the film shows it; none where it does not.
std::optional<TimeRange> shownSpan(DemoProject const& project, RedactionTrack const& track, double at);

/// Hides what the film shows so much later, for as long in the recording; all its keyframes go with it.
void moveRedaction(DemoProject& project, UUID const& redaction, double by, double at);

/// Where it was hidden longer than what is left, its edges are where it was then; where it gets longer, it stays as it
/// is at its end. An edge goes as far as the film shows the recording in one go. What of it is shown elsewhere stays
/// hidden there:
///
///     film       [--clip of 50 to 60--][--clip of 0 to 30--]
///     before     [hidden]                          [hidden ]    one, from 20 to 55
///     trimmed        [  ]                          [hidden ]    two
///
void trimRedaction(DemoProject& project, UUID const& redaction, ClipEdge edge, double to, double at);

/// By how much each side moves, in shares of the recording's picture. Where opposite ones move alike, the area keeps
/// its size at the picture's edges.
struct AreaChange {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
};
/// At all of its keyframes.
void changeArea(RedactionTrack& track, AreaChange const& change, double leastSide);

}
