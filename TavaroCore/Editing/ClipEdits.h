#pragma once

namespace tavaro {

struct DemoProject;
struct UUID;
enum class ClipEdge;

/// Edits of one clip. What follows moves with it, and every timed item with the picture. Times are output seconds.
/// A clip that the document does not hold throws `EditError::noSuchClip`.

/// No trim leaves a clip shorter than this, unless it was.
inline constexpr double shortestClip = 0.05;

/// How many seconds of output a clip could gain at each edge, at its speed, before its media ends. A held frame has
/// room without end; an asset whose length is not known has none behind the clip.
struct Headroom {
    double leading = 0;
    double trailing = 0;
};
Headroom headroom(DemoProject const& project, UUID const& clip);

/// Output times that an edge of a clip may be trimmed to: from the end of the headroom to `shortestClip` from the
/// other edge. Infinite on the outer side of a held frame.
struct TrimBounds {
    double earliest = 0;
    double latest = 0;
};
TrimBounds trimBounds(DemoProject const& project, UUID const& clip, ClipEdge edge);

/// Moves an edge of a clip to the output time `to`, or as near as its bounds allow.
///
///     trailing edge to |        [AAAAAA][BBBB]   →   [AAA][BBBB]
///     leading edge to |         [AAAA][BBBBBB]   →   [AAAA][BBB]     B keeps its end: it begins later in its source
///
/// Inward, the time goes as with `removeTimeRange`. Outward, the media that comes into view shifts what follows; sound
/// that was recorded with the picture and ends at the edge grows with it, as far as its own media reaches. The clip
/// keeps its id. Gives by how many seconds the output got longer.
double trimClip(DemoProject& project, UUID const& clip, ClipEdge edge, double to);

/// Plays a clip at that speed, which is held to `slowestRate`…`fastestRate`; items and sound over it are retimed as by
/// `changeSpeed`. A held frame has no speed: `EditError::heldFrame`.
void setSpeed(DemoProject& project, UUID const& clip, double speed);

/// Silences the recorded sound under a clip, or lets it be heard again.
void setMuted(DemoProject& project, UUID const& clip, bool isMuted);

/// Splits the clip on show at a time in two. False, and nothing changes, within 0.001 s of its edges or where no clip
/// is shown.
bool splitClip(DemoProject& project, double at);

/// Shows a clip once more right behind itself; what follows moves later by its length. Sound that was recorded with the
/// picture comes along; zooms, texts and other items over the clip are not repeated, and those that reach over its end
/// stay as they are.
///
///     clips    [AAAA][BBBB]         [AAAA][AAAA][BBBB]
///     sound    [MMMM][NNNN]    →    [MMMM][MMMM][NNNN]
///     music    [~~~~~~~~~~]         [~~~~~~~~~~]
///
void duplicateClip(DemoProject& project, UUID const& clip);

/// Moves one edge of an audio clip (named by its id, on any track) outward by so many seconds, inward when negative.
/// Nothing else moves: the edge stops at the end of its media, at the clip beside it on the track and at the ends of
/// the edit, and a clip stays `shortestClip` long. Fades are cut to the length. Gives the seconds it moved.
double growAudio(DemoProject& project, UUID const& audioClip, ClipEdge edge, double by);

}
