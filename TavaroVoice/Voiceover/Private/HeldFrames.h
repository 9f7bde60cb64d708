#pragma once

#include <TavaroCore/Records/UUID.h>

#include <string>
#include <vector>

namespace tavaro {

struct DemoProject;
struct VideoClip;

/// The frames that a film holds so that its narration has room. The clip of one is known by its id, which is made of
/// the id of the line that waits until the frame goes on: no field of a clip says who made it. What cuts, splits and
/// changes of speed leave of such a clip is known as well, since the ids of its parts begin alike.
UUID heldFrameID(UUID const& line);
bool isHeldForVoiceover(VideoClip const& clip);

/// In the order of the film.
std::vector<VideoClip> heldFrames(DemoProject const& project);

/// Holds the frame on show at `at`, as `insertTime` does; the last one of the film is held for no line in particular.
/// `line` is a copy: the edit replaces the lists that it may be from.
void holdFrame(DemoProject& project, double at, double seconds, UUID line);

/// Where the film would end if its last frame was not held.
double endWithoutHeldFrame(DemoProject const& project);

/// Takes all of them out again, which undoes `holdFrame`: what began behind one moves back, what began inside it begins
/// where it was, and sound that played on over it plays on. Cuts of what was recorded stay, without a gap.
void withdrawHeldFrames(DemoProject& project);

}
