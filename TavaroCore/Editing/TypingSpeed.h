#pragma once

#include <TavaroCore/Editing/SilenceRemoval.h>
#include <TavaroCore/Values/TimeRange.h>

#include <vector>

namespace tavaro {

struct KeystrokeEvent;

/// Where someone types, in seconds of the recording: runs of five or more keys that are no shortcuts, each less than a
/// second after the one before, that last two seconds or longer. Less is not worth a change of speed.
std::vector<TimeRange> typingStretches(std::vector<KeystrokeEvent> const& keystrokes);

/// Plays the typing that the edit shows `by` times as fast (held to 1…`fastestRate`), with every item, the pointer and
/// the sound over the same picture. What plays faster than recorded already is left alone, so a second run changes
/// nothing; so are pieces that last under half a second.
SpansEdited speedUpTyping(DemoProject& project, double by);

}
