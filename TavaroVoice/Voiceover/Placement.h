#pragma once

namespace tavaro {

struct DemoProject;

/// Lays the lines of the voice-over on the film, each as long as its sound, or as its text may take while it has none.
///
///     anchors   |A    |B      |C               |A    |B      |C
///     pushed    [--A--][---B---][C]    held    [--A--]       |
///                                              [A….][hold][-B-]
///
/// - A line begins at its anchor; one without follows the line before it. Lines go by their anchors, not by their
///   places in the list, and never speak at once: after each comes its `trailingPause`.
/// - Where a line is longer than the time to the next anchor, the next lines are pushed on; or, where the plan
///   `stretchesVideoToFit`, the frame at that anchor is held until the line is over, and everything from there on moves
///   later, so that the next line meets its action. A tenth of a second is pushed either way.
/// - Narration that is longer than the film holds its last frame, either way: half a sentence helps nobody.
/// - An anchor behind the film's end means the end.
///
/// Frames that it held before are taken out first, so the film is never longer than its present lines need, and doing
/// it again changes nothing. Frames that a person held stay. The marks are `isHeldForVoiceover`.
void placeVoiceover(DemoProject& project);

}
