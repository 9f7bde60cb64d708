#pragma once

#include <vector>

#include <TavaroCore/Values/TimeRange.h>
#include <TavaroRender/Audio/Private/MixPlan.h>

namespace tavaro {

struct DemoProject;

/// From the document to what is heard.
///
/// Clips that continue each other in the same asset play through; at every other cut the two sides cross over within 6
/// ms, so that no cut clicks. Recorded sound (microphone, system, camera) is silent under muted clips and ends with the
/// edit; music and voice-over may sound on under the outro. The spoken segments of the voice-over plan are heard unless
/// their audio lies on a voice-over track already. Times that are no numbers, speeds that are not positive, and what is
/// never heard (muted, no gain, outside the output) are left out.
class AudioMixer {
public:
    static MixPlan build(DemoProject const& project);
};

/// Edit times at which a segment of the voice-over plan is spoken, in order, apart from each other.
std::vector<TimeRange> voiceoverWindows(DemoProject const& project);

/// How much a track is lowered inside its windows, 0…1. While the plan's automatic ducking is on, that is the plan's
/// amount; music goes 0.1 deeper (0.9 at most), and voice-over itself, like every track when it is off, by its own.
double duckAmount(DemoProject const& project, AudioTrack const& track);

/// Output seconds at which a click sounds: those that the edit shows, at least 0.09 s apart, ascending.
std::vector<double> clickTimes(DemoProject const& project);

}
