#pragma once

namespace tavaro {

struct DemoProject;

/// What an edit of many spans at once did.
struct SpansEdited {
    int count = 0;      // spans
    double seconds = 0; // by which the output got shorter
};

/// Cuts every silence that is marked for removal (`isRemoved`) out of the edit and drops its span; silences that the
/// user wants to keep stay, and move with the picture. Spans are cut from the latest to the earliest, so that each is
/// still where it was found; spans that overlap are cut as one.
SpansEdited removeAllSilence(DemoProject& project);

}
