#pragma once

#include <TavaroCore/Voice/VoiceoverPlan.h>
#include <TavaroVoice/Voiceover/SpokenLines.h>

#include <cstddef>
#include <filesystem>
#include <vector>

namespace tavaro {

struct DemoProject;

/// The lines of a plan that are to be spoken in a voice: those that have no right sound yet; or `only` these,
/// whatever they have. Whoever asks for a line that was sped up with its picture gets it at its own pace again.
std::vector<LineToSpeak> linesToSpeak(VoiceoverPlan const& plan, VoiceSettings const& voice,
                                      std::vector<UUID> const& only = {});

/// What saying them costs: what has its sound in the package already costs nothing.
struct SpeakingCost {
    std::size_t lines = 0;      // to be spoken
    std::size_t characters = 0; // Unicode scalar values, as services count
};
SpeakingCost speakingCost(std::vector<LineToSpeak> const& lines, VoiceSettings const& voice,
                          std::filesystem::path const& assets);

/// Gives the spoken lines to the document, which may have been edited since: each to the segment that has its id and
/// its text still. From then on they are heard; `placeVoiceover` puts them where they belong.
void takeIn(DemoProject& project, SpokenLines const& lines);

}
