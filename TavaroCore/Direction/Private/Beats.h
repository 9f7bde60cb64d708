#pragma once

#include <TavaroCore/Values/TimeRange.h>

#include <vector>

namespace tavaro {

struct DemoProject;
struct RecordingMetadata;

/// What a stretch of a demo is about.
enum class BeatKind {
    intro,      // talk before anything happens
    explaining, // talk while the screen rests
    doing,      // the pointer works, keys are pressed
    result,     // the screen has changed and is looked at
    outro       // talk after the last thing was done
};

struct Beat {
    BeatKind kind;
    TimeRange range; // output seconds
};

/// The beats of an edit, end to end from 0 to its duration; neighbours differ in kind. Read from the speech (the
/// transcript, or the microphone's level where there is none), the clicks, keys and pointer moves of `shownLog` (the
/// log in output times) and the screen's scene changes. Silence in which nothing happens belongs to what was before; at
/// the beginning, to what comes.
std::vector<Beat> beats(DemoProject const& project, RecordingMetadata const& shownLog);

}
